#pragma once

#include "serial.h"

/// The pending command: one for the whole library. Read and written under the link's lock.
struct PendingCommand {
    std::int32_t code;
    std::int32_t length;
    unsigned char payload[16];
    std::int32_t replyLength;
    bool filled; ///< not taken by the worker yet
};

extern PendingCommand s_command;

/// What the link has besides its documented members.
struct Serial::Private {
    int port = -1;                   ///< the descriptor to close in the end
    bool started = false;            ///< whether there is a worker
    std::atomic<bool> resend{false}; ///< the slot is to be sent once more
    std::atomic<bool> busy{false};   ///< the lock's holder is not looking at the flags
};
