#include "AsyncWriter.hpp"

#include <cerrno>
#include <cstring>

namespace qarqtool {

AsyncWriter::AsyncWriter(FILE* out) : out_(out), thread_([this] { loop(); }) {}

AsyncWriter::~AsyncWriter() {
    finish();
}

bool AsyncWriter::submit(std::vector<Piece>& batch) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return !busy_; });
    if (failure_ != 0)
        return false;
    work_.swap(batch);
    batch.clear();
    busy_ = true;
    changed_.notify_all();
    return true;
}

bool AsyncWriter::finish() {
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return !busy_; });
        stop_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable())
        thread_.join();
    std::lock_guard<std::mutex> lock(mutex_);
    return failure_ == 0;
}

std::string AsyncWriter::error() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return failure_ == 0 ? std::string() : std::string(std::strerror(failure_));
}

void AsyncWriter::loop() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return busy_ || stop_; });
        if (!busy_)
            return;
        // The batch is the writer's alone while busy_: write it unlocked.
        lock.unlock();
        int failure = 0;
        for (const Piece& p : work_) {
            if (std::fwrite(p.data, 1, p.length, out_) != p.length) {
                failure = errno != 0 ? errno : EIO;
                break;
            }
        }
        lock.lock();
        failure_ = failure_ != 0 ? failure_ : failure;
        busy_ = false;
        changed_.notify_all();
    }
}

}  // namespace qarqtool
