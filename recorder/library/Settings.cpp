#include "recorder/library/Settings.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "recorder/library/Queue.h"

namespace quorvel::recorder {

namespace {

constexpr unsigned long long kLargestQueue = 1U << 28;
constexpr char kFileName[] = "libquorvel_wifi_recorder.conf";
constexpr char kDefaultRecording[] = "/tmp/quorvel_wifi.rec";

struct Texts {
    char library[512];
    char file[512];
    char limit[32];
    char queue[32];
    char keep[64];
};

struct Setting {
    const char* name;
    char* text;
    size_t size;
};

void copy(const Setting& setting, const char* value) {
    (void)snprintf(setting.text, setting.size, "%s", value);
}

// Opens the file beside this library. Returns its descriptor, or -1.
int openBeside() {
    Dl_info here{};
    if (dladdr(reinterpret_cast<const void*>(&readSettings), &here) == 0 || here.dli_fname == nullptr) return -1;
    char path[1024];
    const char* const slash = strrchr(here.dli_fname, '/');
    const int folder = slash == nullptr ? 0 : static_cast<int>(slash - here.dli_fname + 1);
    (void)snprintf(path, sizeof path, "%.*s%s", folder, here.dli_fname, kFileName);
    return open(path, O_RDONLY | O_CLOEXEC);
}

void readLine(char* line, const Setting* settings, size_t count) {
    char* const sign = strchr(line, '=');
    if (line[0] == '#' || sign == nullptr) return;
    *sign = '\0';
    for (size_t i = 0; i < count; ++i) {
        if (strcmp(settings[i].name, line) == 0) copy(settings[i], sign + 1);
    }
}

void readFile(const Setting* settings, size_t count) {
    const int file = openBeside();
    if (file < 0) return;
    // A host may supply fopen and read of its own for the plug-in; these it does not.
    char text[4096];
    const ssize_t size = pread(file, text, sizeof text - 1, 0);
    (void)close(file);  // it was only read
    if (size <= 0) return;
    text[size] = '\0';
    char* rest = text;
    for (char* line = strtok_r(text, "\r\n", &rest); line != nullptr; line = strtok_r(nullptr, "\r\n", &rest))
        readLine(line, settings, count);
}

}  // namespace

Settings readSettings() {
    Texts texts{};
    const Setting list[] = {
        {"QUORVEL_RECORDER_LIBRARY", texts.library, sizeof texts.library},
        {"QUORVEL_RECORDER_FILE", texts.file, sizeof texts.file},
        {"QUORVEL_RECORDER_LIMIT", texts.limit, sizeof texts.limit},
        {"QUORVEL_RECORDER_QUEUE", texts.queue, sizeof texts.queue},
        {"QUORVEL_RECORDER_KEEP", texts.keep, sizeof texts.keep},
    };
    copy(list[1], kDefaultRecording);
    readFile(list, sizeof list / sizeof *list);
    for (const Setting& setting : list) {
        const char* const value = getenv(setting.name);
        if (value != nullptr) copy(setting, value);
    }
    Settings settings{};
    memcpy(settings.library, texts.library, sizeof settings.library);
    memcpy(settings.file, texts.file, sizeof settings.file);
    settings.keepMacs = strstr(texts.keep, "macs") != nullptr;
    settings.keepSsids = strstr(texts.keep, "ssids") != nullptr;
    if (settings.library[0] == '\0') {
        (void)snprintf(settings.mistake, sizeof settings.mistake,
                       "QUORVEL_RECORDER_LIBRARY is empty: it must name the library to record; set it in the "
                       "environment or in %s beside the recorder",
                       kFileName);
    }
    settings.queue = Queue::kCapacity;
    if (texts.queue[0] != '\0') {
        char* end = nullptr;
        const unsigned long long bytes = strtoull(texts.queue, &end, 10);
        settings.queue = static_cast<uint32_t>(bytes);
        if (*end != '\0' || bytes < 2 * Queue::kLargestRecord || bytes > kLargestQueue || (bytes & (bytes - 1)) != 0) {
            (void)snprintf(settings.mistake, sizeof settings.mistake,
                           "QUORVEL_RECORDER_QUEUE is \"%s\": it must be a power of two from 131072 to 268435456",
                           texts.queue);
        }
    }
    if (texts.limit[0] != '\0') {
        char* end = nullptr;
        settings.limit = strtoull(texts.limit, &end, 10);
        if (*end != '\0' || texts.limit[0] == '-' || (settings.limit != 0 && settings.limit < 65536)) {
            (void)snprintf(settings.mistake, sizeof settings.mistake,
                           "QUORVEL_RECORDER_LIMIT is \"%s\": it must be 0 for no limit, or a number of bytes from "
                           "65536",
                           texts.limit);
        }
    }
    return settings;
}

}  // namespace quorvel::recorder
