#include "fleet/Plan.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "common/JsonDepth.h"
#include "gateway/launch/Gateway.h"

namespace quorvel::fleet {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPlan = "fleet.json";
constexpr const char* kBoard = "board.json";
constexpr const char* kStarts = "starts.jsonl";
constexpr const char* kLock = ".lock";
constexpr int kLockTries = 100;
constexpr int kTryMilliseconds = 100;

std::string readPlanFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The file is whole at every moment, whenever the program is ended.
void replace(const fs::path& path, const std::string& text) {
    const fs::path beside = path.string() + ".new";
    {
        std::ofstream file(beside, std::ios::binary);
        file << text << std::flush;
        if (!file) throw FleetError("cannot write " + beside.string() + "; is its disk full?");
    }
    fs::rename(beside, path);
}

bool isNumber(const std::string& name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isOurs(const std::string& name) {
    return name == kPlan || name == kBoard || name == kStarts || name == kLock || name == std::string(kPlan) + ".new" ||
           name == std::string(kBoard) + ".new";
}

}  // namespace

Folder::Folder(const launch::Options& options) {
    if (!options.state.empty()) {
        path_ = fs::absolute(options.state).lexically_normal();
        if (!path_.has_filename()) path_ = path_.parent_path();
        return;
    }
    launch::Options asked = options;
    asked.board = launch::Options{}.board;
    path_ = fs::path(launch::stateFolder(asked)).parent_path() / "fleet";
}

bool Folder::exists() const {
    std::error_code ignored;
    return fs::exists(path_ / kPlan, ignored);
}

common::Descriptor Folder::take() const {
    std::error_code error;
    fs::create_directories(path_.parent_path(), error);
    if (mkdir(path_.c_str(), 0700) != 0 && errno != EEXIST)
        throw FleetError("cannot create the fleet's folder " + path_.string() + ": " + std::strerror(errno));
    if (!exists()) {
        for (const auto& entry : fs::directory_iterator(path_, error)) {
            if (isOurs(entry.path().filename())) continue;
            throw FleetError("the folder " + path_.string() + " holds \"" + entry.path().filename().string() +
                             "\" but no fleet; a fleet needs an empty or a new folder: name another one with --state");
        }
    }
    common::Descriptor lock(open((path_ / kLock).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock) throw FleetError("cannot open the lock of " + path_.string() + ": " + std::strerror(errno));
    for (int tries = 0; flock(lock.get(), LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (tries == kLockTries) {
            throw FleetError("another command works on the fleet in " + path_.string() +
                             "; let it end, or interrupt it, and try again");
        }
        (void)poll(nullptr, 0, kTryMilliseconds);
    }
    return lock;
}

Plan Folder::read() const {
    const Json json = common::parseShallow(readPlanFile(path_ / kPlan));
    if (!json.is_object()) {
        throw FleetError("no fleet is up (folder " + path_.string() + "); fleet up N starts one");
    }
    Plan plan;
    plan.first = json.value("first", 1U);
    plan.count = json.value("count", 0U);
    plan.seed = json.value("seed", std::uint64_t{1});
    plan.board = json.value("board", "");
    plan.sandbox = json.value("sandbox", "");
    if (json.contains("agent")) plan.agent = json["agent"];
    return plan;
}

void Folder::write(const Plan& plan) const {
    const Json json = {{"first", plan.first}, {"count", plan.count}, {"seed", plan.seed},
                       {"board", plan.board}, {"agent", plan.agent}, {"sandbox", plan.sandbox}};
    replace(path_ / kPlan, json.dump(2) + "\n");
}

void Folder::keepBoard(const Json& board) const {
    replace(path_ / kBoard, board.dump() + "\n");
}

Json Folder::board() const {
    Json json = common::parseShallow(readPlanFile(path_ / kBoard));
    if (!json.is_object()) {
        throw FleetError("the board's description " + (path_ / kBoard).string() +
                         " is gone or damaged; fleet down and fleet up N start anew");
    }
    return json;
}

void Folder::note(unsigned number, const Start& start) const {
    std::ofstream file(path_ / kStarts, std::ios::app);
    file << Json{{"gateway", number}, {"seconds", start.seconds}, {"endpoint", start.endpoint}, {"error", start.error}}
                .dump(-1, ' ', false, Json::error_handler_t::replace)
         << '\n';
}

std::map<unsigned, Start> Folder::starts() const {
    std::map<unsigned, Start> all;
    std::ifstream file(path_ / kStarts);
    for (std::string line; std::getline(file, line);) {
        const Json json = common::parseShallow(line);
        if (!json.is_object()) continue;  // the last line of a command that was killed
        all[json.value("gateway", 0U)] = {json.value("seconds", 0.0), json.value("endpoint", ""),
                                          json.value("error", "")};
    }
    return all;
}

void Folder::remove() const {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(path_, ignored)) {
        const std::string name = entry.path().filename();
        if (isNumber(name)) fs::remove_all(entry.path(), ignored);
    }
    for (const char* name : {kStarts, kBoard, kPlan, kLock}) {
        fs::remove(path_ / name, ignored);
        fs::remove(path_ / (std::string(name) + ".new"), ignored);
    }
    fs::remove(path_, ignored);  // stays when something else is in it
}

launch::Options optionsFor(const launch::Options& options, const Folder& folder, unsigned number) {
    launch::Options own = options;
    own.state = folder.gateway(number);
    own.board = folder.description(number);
    own.realTime = true;
    if (!own.record.empty()) {
        const fs::path file = own.record;
        own.record =
            file.parent_path() / (file.stem().string() + "-" + std::to_string(number) + file.extension().string());
    }
    return own;
}

}  // namespace quorvel::fleet
