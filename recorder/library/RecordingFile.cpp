#include "recorder/library/RecordingFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quorvel::recorder {

namespace {

char failure[700];

const char* describe(const char* action, const char* path) {
    (void)snprintf(failure, sizeof failure, "cannot %s the recording %s: %s", action, path, strerror(errno));
    return failure;
}

}  // namespace

const char* RecordingFile::open(const char* path, uint64_t limit) {
    struct stat found {};
    if (lstat(path, &found) == 0) {
        if (!S_ISREG(found.st_mode)) {
            (void)snprintf(failure, sizeof failure,
                           "%s is not a file: a recording is never written through a link or to a device; name "
                           "another file in QUORVEL_RECORDER_FILE",
                           path);
            return failure;
        }
        char older[520];
        (void)snprintf(older, sizeof older, "%s.1", path);
        if (rename(path, older) != 0) return describe("keep", path);
    }
    // O_EXCL neither follows a link nor takes a file that somebody else has put there meanwhile.
    descriptor_ = ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (descriptor_ < 0) return describe("create", path);
    limit_ = limit;
    stored_ = 0;
    used_ = 0;
    buffered_ = 0;
    if (!writeAll(kMagic, sizeof kMagic)) return describe("write", path);
    return nullptr;
}

bool RecordingFile::writeAll(const void* bytes, uint32_t length) {
    const auto* at = static_cast<const uint8_t*>(bytes);
    uint32_t left = length;
    while (left > 0) {
        const ssize_t written = write(descriptor_, at, left);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            // No part of a record stays behind: the next one begins where the last whole one ends.
            if (ftruncate(descriptor_, static_cast<off_t>(stored_)) == 0)
                (void)lseek(descriptor_, static_cast<off_t>(stored_), SEEK_SET);  // within a regular file
            return false;
        }
        at += written;
        left -= static_cast<uint32_t>(written);
    }
    stored_ += length;
    return true;
}

bool RecordingFile::add(const void* record, uint32_t length) {
    if (used_ + length > kBufferSize && !flush()) {
        ++lost_;
        return false;
    }
    if (length > kBufferSize) {
        lost_ = 1;
        return writeAll(record, length);
    }
    memcpy(buffer_ + used_, record, length);
    used_ += length;
    ++buffered_;
    return true;
}

bool RecordingFile::flush() {
    if (used_ == 0) return true;
    const bool written = writeAll(buffer_, used_);
    lost_ = buffered_;
    used_ = 0;
    buffered_ = 0;
    return written;
}

void RecordingFile::close() {
    (void)::close(descriptor_);  // everything was written before
    descriptor_ = -1;
}

}  // namespace quorvel::recorder
