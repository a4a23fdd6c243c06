#pragma once

#include <cstdint>
#include <string>

namespace quorvel::selftest {

/// The platform that the plug-in finds here in place of the host framework and the WLAN manager: it notes what it is
/// asked and does nothing. The program exports the platform's calls, so that they come before the platform's libraries.
struct Platform {
    // Its answers.
    std::uint32_t createResult = 0;
    std::uint32_t lockResult = 0;
    std::uint32_t unlockResult = 0;
    bool managerAnswers = false;  ///< every variable is "1" and every command succeeds, or everything fails

    // The calls that it received.
    unsigned creates = 0;
    unsigned lockAttempts = 0;
    unsigned locks = 0;
    unsigned unlocks = 0;
    unsigned managerCalls = 0;
    unsigned contextInits = 0;
    unsigned nodeQuestions = 0;
    std::uint32_t contextSize = 0;  ///< of the last initialisation
    std::uint32_t node = 0;         ///< last node asked for
    std::string error;              ///< last message of level 0

    /// Forgets what it was asked.
    void forget();
};

[[nodiscard]] Platform& platform();

/// Bytes of every context that is handed to the plug-in: more than any object needs.
inline constexpr std::size_t kContextRoom = 16384;

/// Tells whether no node of the context is marked.
[[nodiscard]] bool nothingPending(const void* context);
/// Tells whether `node` is marked, and no other.
[[nodiscard]] bool onlyPending(const void* context, std::uint32_t node);

}  // namespace quorvel::selftest
