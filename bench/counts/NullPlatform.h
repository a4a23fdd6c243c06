// A platform that does nothing: the smallest honest host and WLAN manager. Log calls return at once, locks always
// succeed, contexts keep their marks, every variable is one constant text, commands and the board's files are one
// canned file. The plug-in and the bare loops that it is compared with call the very same one.
#pragma once

#include <cstdint>
#include <cstdio>

namespace quorvel::bench {

/// How often the platform was called since the counts were cleared.
struct Calls {
    std::uint64_t log;
    std::uint64_t lock;
    std::uint64_t unlock;
    std::uint64_t extendedGet;  ///< the bridge's reads of variables
    std::uint64_t get;          ///< the other reads of variables
    std::uint64_t set;
    std::uint64_t nvramGet;
    std::uint64_t contextInit;
    std::uint64_t contextIsInit;
    std::uint64_t contextIsSet;
    std::uint64_t fileOpen;
    std::uint64_t fileClose;
    std::uint64_t commandOpen;
    std::uint64_t commandClose;
    std::uint64_t line;  ///< lines read from files and commands
    std::uint64_t other;
};

/// The counts, cleared by assigning {}.
Calls& calls();

/// The text of every variable but the radios' status (Up), the number of stations and the stations' records.
void setAnswer(const char* text);
void setStations(std::uint32_t count);
/// The result of fopen (to read) and popen from now on, whatever is asked for; null gives them back to the C library.
void setFile(const char* path);
void setOutput(const char* path);
/// The bytes that a connected socket reads: the bytes of this file.
void setEvents(const char* path);

}  // namespace quorvel::bench
