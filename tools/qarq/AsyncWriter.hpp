// Writes batches of byte ranges onto a stream from a thread of its own, so
// that the caller converts the next chunk while the last one is written: on
// a machine with two cores or more, conversion and the copy into the page
// cache overlap instead of taking turns.
//
// Ownership: borrows the stream, which nobody else may touch between the
// first submit() and finish(); the bytes of a batch belong to the writer
// until the next submit() or finish() returns. Threads: one caller.
// Failures: the first failed write stops all writing; submit() and finish()
// then return false and error() holds the system's reason.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace qarqtool {

class AsyncWriter {
  public:
    struct Piece {
        const char* data;
        size_t length;
    };

    explicit AsyncWriter(FILE* out);
    ~AsyncWriter();
    AsyncWriter(const AsyncWriter&) = delete;
    AsyncWriter& operator=(const AsyncWriter&) = delete;

    /// Waits until the batch before is written, then takes `batch` (left
    /// empty) to write. False, taking nothing, once a write has failed.
    bool submit(std::vector<Piece>& batch);

    /// Waits until everything submitted is written and stops the thread.
    bool finish();

    /// The reason of the failed write ("" while none failed).
    std::string error() const;

  private:
    void loop();

    FILE* out_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Piece> work_;  // guarded by mutex_
    bool busy_ = false;        // guarded by mutex_: work_ is being written
    bool stop_ = false;        // guarded by mutex_
    int failure_ = 0;          // guarded by mutex_: errno of the failed write
    std::thread thread_;
};

}  // namespace qarqtool
