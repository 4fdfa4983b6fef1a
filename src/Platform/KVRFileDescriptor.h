#pragma once

#include <memory>

/// An open file descriptor shared by the two streams of a session; closed
/// when the last owner lets go.
class KVRFileDescriptor {
public:
    explicit KVRFileDescriptor(int fd);
    ~KVRFileDescriptor();
    KVRFileDescriptor(const KVRFileDescriptor&) = delete;
    KVRFileDescriptor& operator=(const KVRFileDescriptor&) = delete;

    int fd() const { return fd_; }
    bool isSocket() const { return socket_; }
    bool isTerminal() const { return terminal_; }
    /// Refuses further opens of the terminal (TIOCEXCL) until this descriptor closes.
    void setExclusiveTerminal();
    /// poll() on the descriptor; the returned events, 0 on a time-out, -1 on an error.
    int poll(short events, int timeoutMilliseconds) const;

private:
    int fd_;
    bool socket_;
    bool terminal_;
    bool exclusive_ = false;
};
