#include "gateway/manager/Store.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace quorvel::manager {
namespace {

using Json = nlohmann::json;

constexpr int kVersion = 1;
constexpr std::size_t kLargestStore = std::size_t{16} * 1024 * 1024;

class File {
  public:
    explicit File(int descriptor) : descriptor_(descriptor) {}
    ~File() {
        if (descriptor_ >= 0) (void)::close(descriptor_);  // sync() has made it durable before
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    [[nodiscard]] int get() const {
        return descriptor_;
    }

  private:
    int descriptor_;
};

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string because(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t wrote = ::write(descriptor, text.data(), text.size());
        if (wrote > 0)
            text.remove_prefix(static_cast<std::size_t>(wrote));
        else if (wrote == 0 || errno != EINTR)
            return false;
    }
    return true;
}

// Texts may hold any bytes, which JSON cannot: those outside ASCII travel as one code point per byte.
std::string widened(const std::string& bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
            continue;
        }
        text += static_cast<char>(0xc0U | byte >> 6U);
        text += static_cast<char>(0x80U | (byte & 0x3fU));
    }
    return text;
}

std::optional<std::string> narrowed(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x80) {
            bytes += text[i];
            continue;
        }
        if ((byte != 0xc2 && byte != 0xc3) || i + 1 == text.size()) return std::nullopt;
        bytes += static_cast<char>((byte & 0x03U) << 6U | (static_cast<unsigned char>(text[++i]) & 0x3fU));
    }
    return bytes;
}

Json encoded(const std::map<std::string, std::optional<std::string>>& values) {
    Json result = Json::object();
    for (const auto& [name, value] : values) {
        if (value)
            result[widened(name)] = widened(*value);
        else
            result[widened(name)] = nullptr;
    }
    return result;
}

bool decoded(const Json& document, const char* key, std::map<std::string, std::optional<std::string>>& values) {
    if (!document.contains(key) || !document.at(key).is_object()) return false;
    for (const auto& item : document.at(key).items()) {
        const auto name = narrowed(item.key());
        if (!name || (!item.value().is_string() && !item.value().is_null())) return false;
        if (item.value().is_null()) {
            values[*name] = std::nullopt;
            continue;
        }
        const auto value = narrowed(item.value().get<std::string>());
        if (!value) return false;
        values[*name] = *value;
    }
    return true;
}

}  // namespace

std::string encodeSaved(const Saved& saved) {
    const Json document = {
        {"version", kVersion}, {"variables", encoded(saved.variables)}, {"nvram", encoded(saved.nvram)}};
    return document.dump(1) + "\n";
}

std::optional<Saved> decodeSaved(const std::string& text) {
    const Json document = Json::parse(text, nullptr, false);
    if (!document.is_object() || document.value("version", Json()) != Json(kVersion)) return std::nullopt;
    Saved saved;
    if (!decoded(document, "variables", saved.variables) || !decoded(document, "nvram", saved.nvram))
        return std::nullopt;
    return saved;
}

Store::Store(std::string path) : path_(std::move(path)) {}

Saved Store::load(std::string& problem) const {
    const File file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0) {
        if (errno != ENOENT) problem = because("cannot read the store " + path_) + "; factory values are used";
        return {};
    }
    std::string text;
    char piece[8192];
    ssize_t got = 0;
    while (text.size() <= kLargestStore && (got = ::read(file.get(), piece, sizeof piece)) > 0) {
        text.append(piece, static_cast<std::size_t>(got));
    }
    if (got < 0) {
        problem = because("cannot read the store " + path_) + "; factory values are used";
        return {};
    }
    if (auto saved = decodeSaved(text)) return *saved;
    const std::string aside = path_ + ".damaged";
    problem = "the store " + path_ + " is damaged; it is kept as " + aside + " and factory values are used";
    if (std::rename(path_.c_str(), aside.c_str()) != 0) {
        problem = because("the store " + path_ + " is damaged and cannot be kept aside") + "; factory values are used";
    }
    return {};
}

std::optional<std::string> Store::save(const Saved& saved, const std::function<void()>& halfway) const {
    const std::string text = encodeSaved(saved);
    const std::string fresh = path_ + ".new";
    {
        const File file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
        if (file.get() < 0) return because("cannot create " + fresh);
        std::optional<std::string> failure;
        const std::size_t half = text.size() / 2;
        if (!writeAll(file.get(), std::string_view(text).substr(0, half))) failure = because("cannot write " + fresh);
        if (!failure) halfway();
        if (!failure && !writeAll(file.get(), std::string_view(text).substr(half)))
            failure = because("cannot write " + fresh);
        if (!failure && ::fsync(file.get()) != 0) failure = because("cannot make " + fresh + " durable");
        if (failure) {
            (void)::unlink(fresh.c_str());  // a left-over is overwritten by the next save
            return failure;
        }
    }
    if (std::rename(fresh.c_str(), path_.c_str()) != 0) {
        auto failure = because("cannot replace " + path_);
        (void)::unlink(fresh.c_str());  // the old file stays valid without it
        return failure;
    }
    const std::string folder = folderOf(path_);
    const File directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.get() < 0 || ::fsync(directory.get()) != 0)
        return because("cannot make the folder " + folder + " durable");
    return std::nullopt;
}

}  // namespace quorvel::manager
