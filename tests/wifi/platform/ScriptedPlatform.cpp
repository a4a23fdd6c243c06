#include "tests/wifi/platform/ScriptedPlatform.h"

#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include <wlcsm.h>
#include "tests/wifi/platform/RealCalls.h"

namespace quorvel::scripted {

namespace {

using Guard = std::lock_guard<std::mutex>;

constexpr std::uint32_t kWouldDeadlock = 35;
constexpr std::uint32_t kNotLocked = 1;

bool isAllocation(const std::string& name) {
    return name == "malloc" || name == "calloc" || name == "realloc";
}

std::string contentOf(std::FILE* stream) {
    (void)std::fflush(stream);
    std::string content;
    char buffer[4096];
    ssize_t size = 0;
    while ((size = pread(fileno(stream), buffer, sizeof buffer, static_cast<off_t>(content.size()))) > 0) {
        content.append(buffer, static_cast<std::size_t>(size));
    }
    return content;
}

struct BreakingText {
    std::string content;
    std::size_t position = 0;
};

ssize_t readBreakingText(void* cookie, char* buffer, std::size_t size) {
    auto& text = *static_cast<BreakingText*>(cookie);
    if (text.position == text.content.size()) {
        errno = EIO;
        return -1;
    }
    const std::size_t given = text.content.copy(buffer, size, text.position);
    text.position += given;
    return static_cast<ssize_t>(given);
}

int seekBreakingText(void* cookie, off64_t* offset, int whence) {
    auto& text = *static_cast<BreakingText*>(cookie);
    if (whence != SEEK_SET || *offset < 0 || static_cast<std::size_t>(*offset) > text.content.size()) {
        errno = EINVAL;
        return -1;
    }
    text.position = static_cast<std::size_t>(*offset);
    return 0;
}

int closeBreakingText(void* cookie) {
    delete static_cast<BreakingText*>(cookie);
    return 0;
}

// A stream whose end is an error.
std::FILE* breakingStreamOf(const std::string& content) {
    auto text = std::make_unique<BreakingText>(BreakingText{content, 0});
    std::FILE* stream = fopencookie(text.get(), "r", {readBreakingText, nullptr, seekBreakingText, closeBreakingText});
    if (stream != nullptr) {
        (void)text.release();  // the stream owns it now
    }
    return stream;
}

std::FILE* streamOf(const std::string& content) {
    std::FILE* stream = std::tmpfile();
    if (stream == nullptr) {
        return nullptr;
    }
    (void)std::fwrite(content.data(), 1, content.size(), stream);
    std::rewind(stream);
    return stream;
}

}  // namespace

Platform& Platform::instance() {
    // Never destroyed: a thread of the plug-in may outlive main.
    static Platform* platform = new Platform;
    keepWrappedCalls();
    keepHostCalls();
    keepManagerCalls();
    return *platform;
}

void Platform::reset() {
    const Guard guard(mutex_);
    allocationsArmed_ = false;
    order_ = 0;
    calls_.clear();
    counts_.clear();
    logs_.clear();
    sleeps_.clear();
    rules_.clear();
    lockHeld_ = false;
    lockMisuse_.clear();
    variables_.clear();
    variablesEverywhere_.clear();
    nvram_.clear();
    records_.clear();
    handed_.clear();
    systemUpSeconds_ = 0;
    radioUpSeconds_.clear();
    configuration_.clear();
    spawnInfos_.clear();
    processes_.clear();
    spawned_.reset();
    spawnedInto_.reset();
    terminated_.reset();
    files_.clear();
    failingPaths_.clear();
    breakingStreams_.clear();
    commandOutputs_.clear();
    commandActions_.clear();
    for (const auto& [stream, what] : streams_) {
        (void)__real_fclose(stream);
    }
    streams_.clear();
    readsScripted_ = false;
    reads_.clear();
    readsDone_ = 0;
    socketsAllowed_ = false;
    for (const int descriptor : sockets_) {
        (void)__real_close(descriptor);
    }
    sockets_.clear();
    if (plugInEnd_ >= 0) {
        (void)__real_close(plugInEnd_);
    }
    if (peerEnd_ >= 0) {
        (void)__real_close(peerEnd_);
    }
    plugInEnd_ = -1;
    peerEnd_ = -1;
    connectedPath_.clear();
    connectedLength_ = 0;
    connectAction_ = nullptr;
    cancelReal_ = false;
}

void Platform::activate(bool active) {
    active_ = active;
}

std::vector<Call> Platform::calls() const {
    const Guard guard(mutex_);
    return calls_;
}

std::vector<std::string> Platform::callTexts() const {
    const Guard guard(mutex_);
    std::vector<std::string> texts;
    for (const Call& call : calls_) {
        texts.push_back(call.text());
    }
    return texts;
}

std::vector<std::string> Platform::callTexts(std::initializer_list<const char*> names) const {
    const Guard guard(mutex_);
    std::vector<std::string> texts;
    for (const Call& call : calls_) {
        if (std::any_of(names.begin(), names.end(), [&call](const char* name) { return call.name == name; })) {
            texts.push_back(call.text());
        }
    }
    return texts;
}

std::size_t Platform::callCount(const std::string& name) const {
    const Guard guard(mutex_);
    return static_cast<std::size_t>(
        std::count_if(calls_.begin(), calls_.end(), [&name](const Call& call) { return call.name == name; }));
}

void Platform::awaitCalls(const std::string& name, std::size_t n) {
    std::unique_lock<std::mutex> guard(mutex_);
    called_.wait(guard, [this, &name, n] { return counts_[name] >= n; });
}

std::vector<LogLine> Platform::logs() const {
    const Guard guard(mutex_);
    return logs_;
}

std::vector<std::string> Platform::logTexts(std::uint32_t level) const {
    const Guard guard(mutex_);
    std::vector<std::string> texts;
    for (const LogLine& line : logs_) {
        if (line.level == level) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

std::size_t Platform::logCount(std::uint32_t level, const std::string& text) const {
    const Guard guard(mutex_);
    return static_cast<std::size_t>(std::count_if(logs_.begin(), logs_.end(), [level, &text](const LogLine& line) {
        return line.level == level && line.text == text;
    }));
}

void Platform::forget() {
    const Guard guard(mutex_);
    calls_.clear();
    counts_.clear();
    logs_.clear();
    sleeps_.clear();
    handed_.clear();
}

std::vector<double> Platform::sleeps() const {
    const Guard guard(mutex_);
    return sleeps_;
}

void Platform::addRule(const std::string& name, Rule rule) {
    const Guard guard(mutex_);
    rules_[name].push_back(rule);
    if (isAllocation(name)) {
        allocationsArmed_ = true;
    }
}

void Platform::fail(const std::string& name) {
    failFrom(name, 1);
}

void Platform::failAt(const std::string& name, std::uint32_t n) {
    addRule(name, {n, n, {true, 0}});
}

void Platform::failFrom(const std::string& name, std::uint32_t n) {
    addRule(name, {n, 0xFFFFFFFFU, {true, 0}});
}

void Platform::answer(const std::string& name, std::int64_t result) {
    answerFrom(name, 1, result);
}

void Platform::answerAt(const std::string& name, std::uint32_t n, std::int64_t result) {
    addRule(name, {n, n, {false, result}});
}

void Platform::answerFrom(const std::string& name, std::uint32_t n, std::int64_t result) {
    addRule(name, {n, 0xFFFFFFFFU, {false, result}});
}

void Platform::succeed(const std::string& name) {
    const Guard guard(mutex_);
    rules_.erase(name);
    allocationsArmed_ =
        std::any_of(rules_.begin(), rules_.end(), [](const auto& entry) { return isAllocation(entry.first); });
}

std::optional<Platform::Forced> Platform::enter(const std::string& name, const std::string& arguments) {
    const Guard guard(mutex_);
    calls_.push_back({name, arguments, lockHeld_, ++order_, false});
    const std::uint32_t n = ++counts_[name];
    called_.notify_all();
    const auto rules = rules_.find(name);
    if (rules == rules_.end()) {
        return std::nullopt;
    }
    for (auto rule = rules->second.rbegin(); rule != rules->second.rend(); ++rule) {
        if (n >= rule->from && n <= rule->to) {
            calls_.back().forced = true;
            return rule->forced;
        }
    }
    return std::nullopt;
}

bool Platform::armed(const std::string& name) const {
    const Guard guard(mutex_);
    return rules_.count(name) > 0;
}

void Platform::log(LogLine line) {
    const Guard guard(mutex_);
    line.order = ++order_;
    logs_.push_back(std::move(line));
}

void Platform::slept(double seconds) {
    const Guard guard(mutex_);
    sleeps_.push_back(seconds);
}

// --- The lock
// ---------------------------------------------------------------------------------------------------------

std::uint32_t Platform::lock() {
    std::unique_lock<std::mutex> guard(mutex_);
    if (lockHeld_ && lockOwner_ == std::this_thread::get_id()) {
        lockMisuse_.emplace_back("locked by the thread that holds the lock");
        return kWouldDeadlock;
    }
    lockFreed_.wait(guard, [this] { return !lockHeld_; });
    lockHeld_ = true;
    lockOwner_ = std::this_thread::get_id();
    return 0;
}

std::uint32_t Platform::unlock() {
    {
        const Guard guard(mutex_);
        if (!lockHeld_) {
            lockMisuse_.emplace_back("unlocked while nobody held the lock");
            return kNotLocked;
        }
        lockHeld_ = false;
    }
    lockFreed_.notify_one();
    return 0;
}

bool Platform::lockHeld() const {
    const Guard guard(mutex_);
    return lockHeld_;
}

std::vector<std::string> Platform::lockMisuse() const {
    const Guard guard(mutex_);
    return lockMisuse_;
}

void Platform::forgetLockMisuse() {
    {
        const Guard guard(mutex_);
        lockMisuse_.clear();
        lockHeld_ = false;
    }
    lockFreed_.notify_one();
}

// --- Manager
// ----------------------------------------------------------------------------------------------------------

void Platform::setVariable(std::uint32_t radio, std::uint32_t sub, const std::string& name, const std::string& value) {
    const Guard guard(mutex_);
    variables_[{radio, sub, name}] = value;
}

void Platform::setVariableEverywhere(const std::string& name, const std::string& value) {
    const Guard guard(mutex_);
    variablesEverywhere_[name] = value;
}

void Platform::removeVariable(std::uint32_t radio, std::uint32_t sub, const std::string& name) {
    const Guard guard(mutex_);
    variables_.erase({radio, sub, name});
}

std::optional<std::string> Platform::variable(std::uint32_t radio, std::uint32_t sub, const std::string& name) const {
    const Guard guard(mutex_);
    const auto own = variables_.find({radio, sub, name});
    if (own != variables_.end()) {
        return own->second;
    }
    const auto common = variablesEverywhere_.find(name);
    return common == variablesEverywhere_.end() ? std::nullopt : std::optional(common->second);
}

bool Platform::readVariable(std::uint32_t radio, std::uint32_t sub, const char* name, char* value) const {
    const std::optional<std::string> text = variable(radio, sub, name);
    if (!text) {
        return false;
    }
    const std::size_t length = std::min<std::size_t>(text->size(), WLCSM_VALUE_SIZE);
    std::memcpy(value, text->data(), length);
    if (length < WLCSM_VALUE_SIZE) {
        value[length] = '\0';
    }
    return true;
}

void Platform::writeVariable(std::uint32_t radio, std::uint32_t sub, const char* name, const char* value) {
    setVariable(radio, sub, name, value == nullptr ? "" : value);
}

void Platform::setNvram(const std::string& name, const std::string& value) {
    const Guard guard(mutex_);
    nvram_[name] = value;
}

void Platform::removeNvram(const std::string& name) {
    const Guard guard(mutex_);
    nvram_.erase(name);
}

std::optional<std::string> Platform::nvram(const std::string& name) const {
    const Guard guard(mutex_);
    const auto entry = nvram_.find(name);
    return entry == nvram_.end() ? std::nullopt : std::optional(entry->second);
}

void Platform::setRecord(const std::string& call, const std::string& bytes) {
    const Guard guard(mutex_);
    records_[call] = bytes;
}

std::optional<std::string> Platform::record(const std::string& call) const {
    const Guard guard(mutex_);
    const auto entry = records_.find(call);
    return entry == records_.end() ? std::nullopt : std::optional(entry->second);
}

void Platform::noteHanded(const std::string& call, const void* record, std::size_t size) {
    if (record == nullptr) {
        return;
    }
    const Guard guard(mutex_);
    handed_[call] = std::string(static_cast<const char*>(record), size);
}

std::optional<std::string> Platform::handed(const std::string& call) const {
    const Guard guard(mutex_);
    const auto entry = handed_.find(call);
    return entry == handed_.end() ? std::nullopt : std::optional(entry->second);
}

void Platform::setSystemUpSeconds(std::uint32_t seconds) {
    const Guard guard(mutex_);
    systemUpSeconds_ = seconds;
}

std::uint32_t Platform::systemUpSeconds() const {
    const Guard guard(mutex_);
    return systemUpSeconds_;
}

void Platform::setRadioUpSeconds(std::uint32_t radio, std::uint32_t seconds) {
    const Guard guard(mutex_);
    radioUpSeconds_[radio] = seconds;
}

std::uint32_t Platform::radioUpSeconds(std::uint32_t radio) const {
    const Guard guard(mutex_);
    const auto entry = radioUpSeconds_.find(radio);
    return entry == radioUpSeconds_.end() ? 0 : entry->second;
}

// --- Host
// -------------------------------------------------------------------------------------------------------------

void Platform::setConfiguration(const std::string& section, const std::string& key, const std::string& value) {
    const Guard guard(mutex_);
    configuration_[{section, key}] = value;
}

std::optional<std::string> Platform::configuration(const std::string& section, const std::string& key) const {
    const Guard guard(mutex_);
    const auto entry = configuration_.find({section, key});
    return entry == configuration_.end() ? std::nullopt : std::optional(entry->second);
}

void Platform::setSpawnInfo(const std::string& section, const SpawnInfo& info) {
    const Guard guard(mutex_);
    spawnInfos_[section] = info;
}

std::optional<SpawnInfo> Platform::spawnInfo(const std::string& section) const {
    const Guard guard(mutex_);
    const auto entry = spawnInfos_.find(section);
    return entry == spawnInfos_.end() ? std::nullopt : std::optional(entry->second);
}

void Platform::setProcess(const std::string& name, std::int32_t id) {
    const Guard guard(mutex_);
    processes_[name] = id;
}

std::int32_t Platform::process(const std::string& name) const {
    const Guard guard(mutex_);
    const auto entry = processes_.find(name);
    return entry == processes_.end() ? 0 : entry->second;
}

void Platform::noteSpawned(const SpawnInfo& info, const ProcessRecord& process) {
    const Guard guard(mutex_);
    spawned_ = info;
    spawnedInto_ = process;
}

void Platform::noteTerminated(const SpawnInfo& info) {
    const Guard guard(mutex_);
    terminated_ = info;
}

std::optional<SpawnInfo> Platform::spawned() const {
    const Guard guard(mutex_);
    return spawned_;
}

std::optional<ProcessRecord> Platform::spawnedInto() const {
    const Guard guard(mutex_);
    return spawnedInto_;
}

std::optional<SpawnInfo> Platform::terminated() const {
    const Guard guard(mutex_);
    return terminated_;
}

// --- Files and commands
// -----------------------------------------------------------------------------------------------

void Platform::setFile(const std::string& path, const std::string& content) {
    const Guard guard(mutex_);
    files_[path] = content;
}

std::optional<std::string> Platform::file(const std::string& path) const {
    const Guard guard(mutex_);
    const auto entry = files_.find(path);
    return entry == files_.end() ? std::nullopt : std::optional(entry->second);
}

void Platform::failOpen(const std::string& path) {
    const Guard guard(mutex_);
    failingPaths_.insert(path);
}

void Platform::breakReading(const std::string& pathOrCommand) {
    const Guard guard(mutex_);
    breakingStreams_.insert(pathOrCommand);
}

std::vector<std::string> Platform::openStreams() const {
    const Guard guard(mutex_);
    std::vector<std::string> names;
    for (const auto& [stream, what] : streams_) {
        names.push_back(what.name);
    }
    return names;
}

void Platform::setCommandOutput(const std::string& command, const std::string& output) {
    const Guard guard(mutex_);
    commandOutputs_[command] = output;
}

void Platform::onCommand(const std::string& command, std::function<int()> action) {
    const Guard guard(mutex_);
    commandActions_[command] = std::move(action);
}

std::optional<std::function<int()>> Platform::commandAction(const std::string& command) const {
    const Guard guard(mutex_);
    const auto entry = commandActions_.find(command);
    return entry == commandActions_.end() ? std::nullopt : std::optional(entry->second);
}

std::FILE* Platform::openFile(const std::string& path, const std::string& mode) {
    const Guard guard(mutex_);
    const bool writes = mode.find_first_of("wa+") != std::string::npos;
    const auto entry = files_.find(path);
    if (failingPaths_.count(path) > 0 || (!writes && entry == files_.end())) {
        errno = ENOENT;
        return nullptr;
    }
    const bool fresh = mode.find('w') != std::string::npos || entry == files_.end();
    const bool breaks = !writes && breakingStreams_.count(path) > 0;
    std::FILE* stream = breaks ? breakingStreamOf(entry->second) : streamOf(fresh ? std::string() : entry->second);
    if (stream == nullptr) {
        return nullptr;
    }
    if (mode.find('a') != std::string::npos) {
        (void)std::fseek(stream, 0, SEEK_END);
    }
    streams_[stream] = {path, writes, false};
    return stream;
}

std::FILE* Platform::openCommand(const std::string& command) {
    const Guard guard(mutex_);
    const auto entry = commandOutputs_.find(command);
    const std::string output = entry == commandOutputs_.end() ? std::string() : entry->second;
    std::FILE* stream = breakingStreams_.count(command) > 0 ? breakingStreamOf(output) : streamOf(output);
    if (stream != nullptr) {
        streams_[stream] = {command, false, true};
    }
    return stream;
}

std::optional<int> Platform::closeStream(std::FILE* stream, const char* callName) {
    Stream what;
    {
        const Guard guard(mutex_);
        const auto entry = streams_.find(stream);
        if (entry == streams_.end()) {
            return std::nullopt;
        }
        what = entry->second;
        if (what.writes) {
            files_[what.name] = contentOf(stream);
        }
        streams_.erase(entry);
    }
    (void)enter(callName, "\"" + what.name + "\"");
    return __real_fclose(stream);
}

// --- Memory
// -----------------------------------------------------------------------------------------------------------

void Platform::noteAllocated(const void* block) {
    if (block == nullptr || !active()) {
        return;
    }
    const Guard guard(blocksMutex_);
    blocks_.insert(block);
    blockCount_ = blocks_.size();
}

void Platform::noteFreed(const void* block) {
    // Usually there is no block to look for.
    if (block == nullptr || blockCount_ == 0) {
        return;
    }
    const Guard guard(blocksMutex_);
    blocks_.erase(block);
    blockCount_ = blocks_.size();
}

std::size_t Platform::liveBlocks() const {
    return blockCount_;
}

// --- Event socket
// -----------------------------------------------------------------------------------------------------

void Platform::scriptReads(std::vector<ReadStep> steps) {
    const Guard guard(mutex_);
    reads_ = std::move(steps);
    readsDone_ = 0;
    readsScripted_ = true;
    socketsAllowed_ = true;
}

int Platform::openPeer() {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) {
        return -1;
    }
    const Guard guard(mutex_);
    plugInEnd_ = ends[0];
    peerEnd_ = ends[1];
    readsScripted_ = false;
    socketsAllowed_ = true;
    return peerEnd_;
}

int Platform::makeSocket() {
    const Guard guard(mutex_);
    const int descriptor = plugInEnd_ >= 0 ? std::exchange(plugInEnd_, -1) : __real_socket(AF_UNIX, SOCK_STREAM, 0);
    if (descriptor >= 0) {
        sockets_.insert(descriptor);
    }
    return descriptor;
}

int Platform::connectSocket(const std::string& path, std::uint32_t length) {
    std::function<void()> action;
    {
        const Guard guard(mutex_);
        connectedPath_ = path;
        connectedLength_ = length;
        if (!socketsAllowed_) {
            errno = ENOENT;
            return -1;
        }
        action.swap(connectAction_);
    }
    // Without the mutex: the action may call the plug-in.
    if (action) action();
    return 0;
}

void Platform::onConnect(std::function<void()> action) {
    const Guard guard(mutex_);
    connectAction_ = std::move(action);
}

std::string Platform::connectedPath() const {
    const Guard guard(mutex_);
    return connectedPath_;
}

std::uint32_t Platform::connectedLength() const {
    const Guard guard(mutex_);
    return connectedLength_;
}

bool Platform::ownsSocket(int descriptor) const {
    const Guard guard(mutex_);
    return sockets_.count(descriptor) > 0;
}

void Platform::forgetSocket(int descriptor) {
    const Guard guard(mutex_);
    sockets_.erase(descriptor);
}

std::optional<ReadStep> Platform::nextRead(bool& ended) {
    const Guard guard(mutex_);
    ended = false;
    if (!readsScripted_) {
        return std::nullopt;
    }
    if (readsDone_ >= reads_.size()) {
        ended = true;
        return std::nullopt;
    }
    return reads_[readsDone_++];
}

void Platform::runInThread(void* (*body)(void*), void* argument) {
    pthread_t thread{};
    if (__real_pthread_create(&thread, nullptr, body, argument) == 0) {
        (void)pthread_join(thread, nullptr);
    }
}

void Platform::noteThread(unsigned long handle) {
    const Guard guard(mutex_);
    threads_.push_back(handle);
}

bool Platform::knowsThread(unsigned long handle) const {
    const Guard guard(mutex_);
    return std::find(threads_.begin(), threads_.end(), handle) != threads_.end();
}

std::vector<unsigned long> Platform::takeThreads() {
    const Guard guard(mutex_);
    return std::exchange(threads_, {});
}

void Platform::joinThreads() {
    for (const unsigned long handle : takeThreads()) {
        (void)pthread_join(static_cast<pthread_t>(handle), nullptr);
    }
}

void Platform::endThreads() {
    for (const unsigned long handle : takeThreads()) {
        (void)__real_pthread_cancel(static_cast<pthread_t>(handle));
        (void)pthread_join(static_cast<pthread_t>(handle), nullptr);
    }
}

void Platform::setCancelReal(bool real) {
    const Guard guard(mutex_);
    cancelReal_ = real;
}

bool Platform::cancelReal() const {
    const Guard guard(mutex_);
    return cancelReal_;
}

}  // namespace quorvel::scripted
