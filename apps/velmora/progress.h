// A progress line for long work, on the standard error when it is a terminal.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <streambuf>
#include <string>
#include <thread>

namespace velmora::cli {

// One line rewritten in place with \r: what is being done, how far, how long is left
// (when the whole is known; else how long it has taken), redrawn a few times a second by
// its own thread so that it moves even while the work waits on a server. Cleared when
// the work ends, whichever way. Nothing at all is written when the standard error is not
// a terminal (a pipe, a file, CI) or after --quiet.
class Progress {
 public:
  // `total` units of work (0: unknown); `bytes` shows them as sizes, else as a count.
  Progress(std::string what, std::uint64_t total, bool bytes);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  void reach(std::uint64_t done) { done_.store(done, std::memory_order_relaxed); }

  static void setQuiet(bool quiet);

 private:
  std::string line() const;
  void draw(const std::string& text);

  const std::string what_;
  const std::uint64_t total_;
  const bool bytes_;
  const std::chrono::steady_clock::time_point start_;
  std::atomic<std::uint64_t> done_{0};
  std::mutex mutex_;
  std::string shown_;  // the line on screen
  std::jthread ticker_;
};

// A stream buffer between a stream and its file that tells a Progress how many bytes
// went through it, in either direction.
class CountingBuffer : public std::streambuf {
 public:
  CountingBuffer(std::streambuf& inner, Progress& progress) : inner_(inner), progress_(progress) {}

 protected:
  int_type underflow() override;
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* s, std::streamsize n) override;
  int sync() override { return inner_.pubsync(); }

 private:
  std::streambuf& inner_;
  Progress& progress_;
  char buffer_[1 << 16];
  std::uint64_t count_ = 0;
};

}  // namespace velmora::cli
