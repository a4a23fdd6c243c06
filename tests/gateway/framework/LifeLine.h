#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

// A named pipe whose write end a program keeps open for as long as it lives: shows, without waiting for time to pass,
// that it is up and that it is gone.
class LifeLine {
  public:
    explicit LifeLine(std::string path) : path_(std::move(path)) {
        if (mkfifo(path_.c_str(), 0600) != 0) ADD_FAILURE() << "cannot create " << path_;
        reader_ = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }
    ~LifeLine() {
        close(reader_);
    }
    LifeLine(const LifeLine&) = delete;
    LifeLine& operator=(const LifeLine&) = delete;

    [[nodiscard]] const std::string& path() const {
        return path_;
    }
    // Waits for a program's next byte; false when the pipe was closed or nothing came.
    [[nodiscard]] bool waitForByte() const {
        char byte = 0;
        return waitFor(POLLIN) && read(reader_, &byte, 1) == 1;
    }
    // Waits until nobody has the write end open any more, after somebody had, with all bytes read.
    [[nodiscard]] bool waitForEnd() const {
        char byte = 0;
        return waitFor(POLLHUP) && read(reader_, &byte, 1) == 0;
    }

  private:
    [[nodiscard]] bool waitFor(short event) const {
        pollfd entry{reader_, event, 0};
        constexpr int kMilliseconds = 20000;
        return poll(&entry, 1, kMilliseconds) == 1 && (entry.revents & event) != 0;
    }

    std::string path_;
    int reader_ = -1;
};
