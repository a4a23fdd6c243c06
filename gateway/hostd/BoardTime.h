#pragma once

#include <functional>

#include "gateway/hostd/protocol/Records.h"

namespace quorvel::hostd {

/// How the process sleeps. The program defines the C library's sleep(), through which the plug-in waits: on a board
/// whose time may run ahead it advances the board's clock instead.
struct BoardTime {
    bool realTime = false;
    /// Called before a sleep that really takes its time.
    std::function<void(unsigned seconds)> waiting;
    /// Called with the manager's answer when its clock has been advanced instead.
    std::function<void(const protocol::Json& answer)> advanced;
};

/// Sets how the process sleeps from now on. Call it before there are threads.
void setBoardTime(BoardTime time);

/// Does what sleep() does on this board. Returns 0, or the seconds left when the WLAN manager, whose work is waited
/// for, has ended or stopped.
unsigned sleepOnBoard(unsigned seconds);

}  // namespace quorvel::hostd
