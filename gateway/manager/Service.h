#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "common/Durations.h"
#include "gateway/manager/Clock.h"
#include "gateway/manager/Model.h"
#include "gateway/manager/Protocol.h"
#include "gateway/manager/Store.h"

namespace quorvel::manager {

/// The work during which the manager ends or stops.
enum class FaultPoint { kNothing, kRead, kWrite, kScan, kSave };

/// How the manager misbehaves on request.
struct Faults {
    Milliseconds hangFor = 0;  ///< real time; the server takes it and sets it back
    unsigned drop = 0;         ///< so many of the next requests get no answer but the connection's end
    unsigned truncate = 0;     ///< so many get half an answer
    unsigned oversize = 0;     ///< so many get a frame that claims to be too long
    bool save = false;         ///< saving fails
    FaultPoint point = FaultPoint::kNothing;
    int signal = 0;  ///< that the manager sends itself point the next of those
    description::ToolFault wl = description::ToolFault::kNone;
};

/// One connection's pending bytes: those that its last answer points into, and the rest of a long answer.
struct Session {
    std::string bytes;
    std::string longAnswer;
};

/// The manager behind its socket: model, store, clock and faults, one request at a time.
class Service {
  public:
    Service(description::Board board, Store store, BoardClock clock, std::uint64_t seed);

    /// How the manager sends itself a signal; without it, it neither ends nor stops on request.
    void setSignalling(std::function<void(int signal)> signalling) {
        signalling_ = std::move(signalling);
    }

    /// Performs the request. The answer points into the session.
    void handle(const Request& request, Session& session, Answer& answer);

    /// Performs a control request and returns its answer; see README.md.
    [[nodiscard]] std::string control(std::string_view json);

    /// Lets the model follow the clock.
    void followClock();

    [[nodiscard]] Model& model() {
        return model_;
    }
    [[nodiscard]] BoardClock& clock() {
        return clock_;
    }
    [[nodiscard]] Faults& faults() {
        return faults_;
    }
    /// How many listen for station events; the server's to say.
    void setListeners(std::size_t count) {
        listeners_ = count;
    }
    [[nodiscard]] std::size_t listeners() const {
        return listeners_;
    }
    /// Returns the problem met when loading the store, or the empty text.
    [[nodiscard]] const std::string& problem() const {
        return problem_;
    }

    /// How long requests of an operation have taken.
    [[nodiscard]] const common::Durations& durations(Operation operation) const {
        return durations_[static_cast<std::size_t>(operation)];
    }

  private:
    void perform(const Request& request, Session& session, Answer& answer);
    [[nodiscard]] bool save();
    void comeTo(FaultPoint moment);
    void longAnswer(Session& session, Answer& answer, std::string text, std::int32_t result);

    Store store_;
    std::string problem_;
    BoardClock clock_;
    Model model_;
    Faults faults_;
    std::function<void(int signal)> signalling_ = [](int) {};
    std::size_t listeners_ = 0;
    std::array<common::Durations, kLastOperation + 1> durations_;
};

}  // namespace quorvel::manager
