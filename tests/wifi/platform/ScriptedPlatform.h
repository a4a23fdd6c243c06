#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <quorvel.h>

// The platform that the plug-in is linked against in these tests: the host framework, the manager's client and the
// C-library calls that would leave the process. It answers from scripts and writes down what it was asked.
namespace quorvel::scripted {

// One call that the plug-in made. Arguments read as in source: numbers in decimal, texts in quotes, null as `null`,
// object contexts as `ctx`, output buffers and records as `out`.
struct Call {
    std::string name;
    std::string arguments;
    bool lockHeld = false;    // whether the lock was held when the call was made
    std::uint64_t order = 0;  // position among all calls and log lines
    bool forced = false;      // whether a test forced its result
    [[nodiscard]] std::string text() const {
        return name + "(" + arguments + ")";
    }
};

// One line given to Quorvel_LogPrint.
struct LogLine {
    std::uint32_t level = 0;
    std::string file;
    std::string function;
    std::uint32_t line = 0;
    std::string format;
    std::string text;  // formatted
    std::uint64_t order = 0;
};

// What one read from the event socket gives: bytes, or a result (0 or less) with its errno.
struct ReadStep {
    std::string bytes;
    std::int32_t result = 0;  // used when `bytes` is empty
    int error = 0;
};

class Platform {
  public:
    [[nodiscard]] static Platform& instance();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    // Forgets every script and every recording and frees the lock. While active, the wrapped C-library calls are
    // scripted; otherwise they reach the C library.
    void reset();
    void activate(bool active);
    [[nodiscard]] bool active() const {
        return active_.load();
    }

    // --- What happened
    // ------------------------------------------------------------------------------------------------
    [[nodiscard]] std::vector<Call> calls() const;
    // The texts "name(arguments)" of all calls, or of those with one of the names, in order.
    [[nodiscard]] std::vector<std::string> callTexts() const;
    [[nodiscard]] std::vector<std::string> callTexts(std::initializer_list<const char*> names) const;
    [[nodiscard]] std::size_t callCount(const std::string& name) const;
    // Waits until there have been `n` calls of that name (for calls from other threads).
    void awaitCalls(const std::string& name, std::size_t n);
    [[nodiscard]] std::vector<LogLine> logs() const;
    [[nodiscard]] std::vector<std::string> logTexts(std::uint32_t level) const;
    [[nodiscard]] std::size_t logCount(std::uint32_t level, const std::string& text) const;
    [[nodiscard]] bool logged(std::uint32_t level, const std::string& text) const {
        return logCount(level, text) > 0;
    }
    // The format of the first line with this text; empty without such a line.
    [[nodiscard]] std::string formatOf(const std::string& text) const {
        for (const LogLine& line : logs()) {
            if (line.text == text) return line.format;
        }
        return {};
    }
    // Forgets calls and log lines (and starts the counting of calls anew), keeps scripts.
    void forget();
    // Seconds of every sleep, in order; no call really waits.
    [[nodiscard]] std::vector<double> sleeps() const;

    // --- Forced results
    // ----------------------------------------------------------------------------------------------- A forced call is
    // recorded and has no other effect. `n` counts the calls of that name from 1, since reset() or forget(). fail...:
    // the call's own failure (0 where non-zero means success, null for streams and memory, -1 with errno for system
    // calls, 1 otherwise). A later rule for the same call wins.
    void fail(const std::string& name);
    void failAt(const std::string& name, std::uint32_t n);
    void failFrom(const std::string& name, std::uint32_t n);
    void answer(const std::string& name, std::int64_t result);
    void answerAt(const std::string& name, std::uint32_t n, std::int64_t result);
    void answerFrom(const std::string& name, std::uint32_t n, std::int64_t result);
    void succeed(const std::string& name);  // drops the rules of that name

    // --- The lock
    // -----------------------------------------------------------------------------------------------------
    [[nodiscard]] bool lockHeld() const;
    // Locking by the thread that holds the lock (which would wait for ever; answered 35) and unlocking a free lock
    // (answered 1) are written down here; PlatformTest fails for them unless they are expected.
    [[nodiscard]] std::vector<std::string> lockMisuse() const;
    void forgetLockMisuse();

    // --- Manager
    // ------------------------------------------------------------------------------------------------------ Variables
    // serve wlcsm_mngr_get and wlcsm_mngr_ext_get alike and are written by wlcsm_mngr_set. A value may hold any bytes
    // (a station record). An absent variable fails the read and leaves the buffer unchanged.
    void setVariable(std::uint32_t radio, std::uint32_t sub, const std::string& name, const std::string& value);
    void setVariableEverywhere(const std::string& name, const std::string& value);  // for every index not set by itself
    void removeVariable(std::uint32_t radio, std::uint32_t sub, const std::string& name);
    [[nodiscard]] std::optional<std::string> variable(std::uint32_t radio, std::uint32_t sub,
                                                      const std::string& name) const;
    void setNvram(const std::string& name, const std::string& value);
    void removeNvram(const std::string& name);
    [[nodiscard]] std::optional<std::string> nvram(const std::string& name) const;
    // What a call that fills a record or buffer writes there (wlcsm_mngr_sta_info, wlcsm_mngr_ssid_info,
    // wlcsm_mngr_ci_scanresults, wlcsm_mngr_chanim_stats, wlcsm_mngr_channelstats, wlcsm_mngr_getRadioChannelStats2).
    void setRecord(const std::string& call, const std::string& bytes);
    // The record as such a call was handed it last, before it filled it (the three of channel measurements).
    [[nodiscard]] std::optional<std::string> handed(const std::string& call) const;
    void setSystemUpSeconds(std::uint32_t seconds);
    void setRadioUpSeconds(std::uint32_t radio, std::uint32_t seconds);

    // --- Host
    // ---------------------------------------------------------------------------------------------------------
    void setConfiguration(const std::string& section, const std::string& key, const std::string& value);
    void setSpawnInfo(const std::string& section, const SpawnInfo& info);
    void setProcess(const std::string& name, std::int32_t id);
    // The records that the last spawn and the last termination were given.
    [[nodiscard]] std::optional<SpawnInfo> spawned() const;
    [[nodiscard]] std::optional<ProcessRecord> spawnedInto() const;  // as it was before the spawn filled it
    [[nodiscard]] std::optional<SpawnInfo> terminated() const;

    // --- Files and commands
    // ------------------------------------------------------------------------------------------- While active, fopen
    // knows these files and no others; what is written becomes the file when the stream is closed.
    void setFile(const std::string& path, const std::string& content);
    [[nodiscard]] std::optional<std::string> file(const std::string& path) const;
    [[nodiscard]] std::vector<std::string> openStreams() const;  // paths and commands not closed yet
    // What popen gives for exactly this command; others give nothing. `system` runs the action and answers its result.
    void setCommandOutput(const std::string& command, const std::string& output);
    void onCommand(const std::string& command, std::function<int()> action);
    // fopen of this path fails on demand while the others work.
    void failOpen(const std::string& path);
    // Reading this file, or this command's output, ends with an error in place of its end.
    void breakReading(const std::string& pathOrCommand);

    // --- Memory
    // ------------------------------------------------------------------------------------------------------- Blocks
    // that were allocated while active by malloc, calloc or realloc and have not been freed.
    [[nodiscard]] std::size_t liveBlocks() const;

    // --- Event socket
    // ------------------------------------------------------------------------------------------------- Lets socket()
    // and connect() of a UNIX stream succeed and scripts the reads; when they have been used up, the reading thread
    // ends (as if cancelled there).
    void scriptReads(std::vector<ReadStep> steps);
    // Lets socket() give one end of a pair and returns the other; reads are real.
    [[nodiscard]] int openPeer();
    // Runs the action within the next connect(), before it succeeds.
    void onConnect(std::function<void()> action);
    [[nodiscard]] std::string connectedPath() const;
    [[nodiscard]] std::uint32_t connectedLength() const;
    // Runs the body in a thread of its own and waits until it has ended, by return or by running out of reads.
    void runInThread(void* (*body)(void*), void* argument);
    // Waits until the threads that the plug-in created have ended by themselves, by return or by running out of reads.
    void joinThreads();
    // Cancels and joins the threads that the plug-in created.
    void endThreads();
    // Lets pthread_cancel of a handle that no thread has reach the C library too (it is only recorded otherwise).
    void setCancelReal(bool real);

    // --- Used by the platform's functions
    // -----------------------------------------------------------------------------
    struct Forced {
        bool fails = false;
        std::int64_t result = 0;
    };
    // Writes the call down and returns its forced result, if any.
    [[nodiscard]] std::optional<Forced> enter(const std::string& name, const std::string& arguments);
    [[nodiscard]] bool armed(const std::string& name) const;
    [[nodiscard]] bool allocationsArmed() const {
        return allocationsArmed_.load();
    }
    void noteAllocated(const void* block);
    void noteFreed(const void* block);
    void log(LogLine line);
    void slept(double seconds);
    [[nodiscard]] std::uint32_t lock();
    [[nodiscard]] std::uint32_t unlock();
    [[nodiscard]] bool readVariable(std::uint32_t radio, std::uint32_t sub, const char* name, char* value) const;
    void writeVariable(std::uint32_t radio, std::uint32_t sub, const char* name, const char* value);
    [[nodiscard]] std::optional<std::string> record(const std::string& call) const;
    void noteHanded(const std::string& call, const void* record, std::size_t size);
    [[nodiscard]] std::uint32_t systemUpSeconds() const;
    [[nodiscard]] std::uint32_t radioUpSeconds(std::uint32_t radio) const;
    [[nodiscard]] std::optional<std::string> configuration(const std::string& section, const std::string& key) const;
    [[nodiscard]] std::optional<SpawnInfo> spawnInfo(const std::string& section) const;
    [[nodiscard]] std::int32_t process(const std::string& name) const;
    void noteSpawned(const SpawnInfo& info, const ProcessRecord& process);
    void noteTerminated(const SpawnInfo& info);
    [[nodiscard]] std::FILE* openFile(const std::string& path, const std::string& mode);
    [[nodiscard]] std::FILE* openCommand(const std::string& command);
    // Closes a stream opened above; empty when it is another's.
    [[nodiscard]] std::optional<int> closeStream(std::FILE* stream, const char* callName);
    [[nodiscard]] std::optional<std::function<int()>> commandAction(const std::string& command) const;
    [[nodiscard]] int makeSocket();
    [[nodiscard]] int connectSocket(const std::string& path, std::uint32_t length);
    [[nodiscard]] bool ownsSocket(int descriptor) const;
    void forgetSocket(int descriptor);
    // The next scripted read; empty when reads are real. Sets `ended` when the script is used up.
    [[nodiscard]] std::optional<ReadStep> nextRead(bool& ended);
    void noteThread(unsigned long handle);
    [[nodiscard]] bool knowsThread(unsigned long handle) const;
    [[nodiscard]] bool cancelReal() const;

  private:
    Platform() = default;
    [[nodiscard]] std::vector<unsigned long> takeThreads();

    struct Rule {
        std::uint32_t from = 1;
        std::uint32_t to = 0xFFFFFFFFU;
        Forced forced;
    };
    struct Stream {
        std::string name;
        bool writes = false;
        bool command = false;
    };
    using VariableKey = std::tuple<std::uint32_t, std::uint32_t, std::string>;

    void addRule(const std::string& name, Rule rule);

    mutable std::mutex mutex_;
    std::atomic<bool> active_ = false;
    std::atomic<bool> allocationsArmed_ = false;
    std::uint64_t order_ = 0;
    std::vector<Call> calls_;
    std::map<std::string, std::uint32_t> counts_;
    std::condition_variable called_;
    std::vector<LogLine> logs_;
    std::vector<double> sleeps_;
    std::map<std::string, std::vector<Rule>> rules_;

    bool lockHeld_ = false;
    std::thread::id lockOwner_;
    std::condition_variable lockFreed_;
    std::vector<std::string> lockMisuse_;

    std::map<VariableKey, std::string> variables_;
    std::map<std::string, std::string> variablesEverywhere_;
    std::map<std::string, std::string> nvram_;
    std::map<std::string, std::string> records_;
    std::map<std::string, std::string> handed_;
    std::uint32_t systemUpSeconds_ = 0;
    std::map<std::uint32_t, std::uint32_t> radioUpSeconds_;

    std::map<std::pair<std::string, std::string>, std::string> configuration_;
    std::map<std::string, SpawnInfo> spawnInfos_;
    std::map<std::string, std::int32_t> processes_;
    std::optional<SpawnInfo> spawned_;
    std::optional<ProcessRecord> spawnedInto_;
    std::optional<SpawnInfo> terminated_;

    std::map<std::string, std::string> files_;
    std::set<std::string> failingPaths_;
    std::set<std::string> breakingStreams_;
    std::map<std::string, std::string> commandOutputs_;
    std::map<std::string, std::function<int()>> commandActions_;
    std::map<std::FILE*, Stream> streams_;

    mutable std::mutex blocksMutex_;
    std::set<const void*> blocks_;
    std::atomic<std::size_t> blockCount_ = 0;

    bool readsScripted_ = false;
    std::vector<ReadStep> reads_;
    std::size_t readsDone_ = 0;
    bool socketsAllowed_ = false;
    int plugInEnd_ = -1;
    int peerEnd_ = -1;
    std::set<int> sockets_;
    std::string connectedPath_;
    std::uint32_t connectedLength_ = 0;
    std::function<void()> connectAction_;
    std::vector<unsigned long> threads_;
    bool cancelReal_ = false;
};

// Keeps the wrapped calls in the program, whatever order the libraries are linked in.
void keepWrappedCalls();
void keepHostCalls();
void keepManagerCalls();

}  // namespace quorvel::scripted
