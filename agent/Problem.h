#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace quorvel::agent {

/// Error codes of USP that the agent gives.
enum Code : std::uint32_t {
    kNone = 0,
    kMessageFailed = 7000,
    kMessageNotSupported = 7001,
    kInternalError = 7003,
    kInvalidArguments = 7004,
    kResourcesExceeded = 7005,
    kInvalidSyntax = 7008,
    kUnsupportedParameter = 7010,
    kInvalidType = 7011,
    kInvalidValue = 7012,
    kNotWritable = 7013,
    kValueConflict = 7014,
    kNoSuchObject = 7016,
    kNotCreated = 7017,
    kNotATable = 7018,
    kNotCreatable = 7019,
    kNotUpdated = 7020,
    kRequiredFailed = 7021,
    kCommandFailed = 7022,
    kCanceled = 7023,
    kDeleteFailed = 7024,
    kDuplicateKey = 7025,
    kInvalidPath = 7026,
    kInvalidCommandArguments = 7027,
    kRecordUnparsable = 7100,
    kRecordUnsupported = 7102,
    kInvalidRecordValue = 7104,
    kSessionNotAllowed = 7106,
};

/// An error of one path or parameter; code 0: no error.
struct Problem {
    std::uint32_t code = kNone;
    std::string text = {};

    [[nodiscard]] explicit operator bool() const {
        return code != kNone;
    }
};

/// One parameter's, or one path's, share in a failure.
struct PathProblem {
    std::string path;
    Problem problem;
};

/// Ends the handling of a Message: the answer is an Error.
class Refusal : public std::exception {
  public:
    explicit Refusal(Problem problem, std::vector<PathProblem> paths = {})
        : problem_(std::move(problem)), paths_(std::move(paths)) {}

    [[nodiscard]] const char* what() const noexcept override {
        return problem_.text.c_str();
    }
    [[nodiscard]] const Problem& problem() const {
        return problem_;
    }
    [[nodiscard]] const std::vector<PathProblem>& paths() const {
        return paths_;
    }

  private:
    Problem problem_;
    std::vector<PathProblem> paths_;
};

}  // namespace quorvel::agent
