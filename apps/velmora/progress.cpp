// Progress lines of the velmora tool: drawn on a terminal only, and in the messages'
// language. The work itself reports how far it is; a thread of the line redraws it.
#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>

#include "base/message.h"

namespace velmora::cli {

namespace {

std::atomic<bool> quietAsked{false};

std::string size(std::uint64_t bytes) {
  if (bytes < 10'000) return say("{} B", {std::to_string(bytes)});
  if (bytes < 10'000'000) return say("{} kB", {std::to_string(bytes / 1'000)});
  return say("{} MB", {std::to_string(bytes / 1'000'000)});
}

std::string duration(std::chrono::seconds s) {
  const auto n = s.count();
  if (n < 60) return say("{} s", {std::to_string(n)});
  return say("{} min {} s", {std::to_string(n / 60), std::to_string(n % 60)});
}

}  // namespace

void Progress::setQuiet(bool quiet) {
  quietAsked = quiet;
}

Progress::Progress(std::string what, std::uint64_t total, bool bytes)
    : what_(std::move(what)),
      total_(total),
      bytes_(bytes),
      start_(std::chrono::steady_clock::now()) {
  if (quietAsked || isatty(STDERR_FILENO) != 1) return;
  ticker_ = std::jthread([this](std::stop_token stop) {
    std::mutex sleep;
    std::condition_variable_any wake;
    while (!stop.stop_requested()) {
      draw(line());
      std::unique_lock lock(sleep);
      wake.wait_for(lock, stop, std::chrono::milliseconds(200), [] { return false; });
    }
  });
}

Progress::~Progress() {
  if (!ticker_.joinable()) return;
  ticker_.request_stop();
  ticker_.join();
  draw("");
}

std::string Progress::line() const {
  const std::uint64_t done = done_.load(std::memory_order_relaxed);
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_);
  const std::string far = bytes_ ? size(done) : std::to_string(done);
  if (total_ == 0) {
    if (done == 0) return say("{}: {} so far", {what_, duration(elapsed)});
    return say("{}: {} done in {}", {what_, far, duration(elapsed)});
  }
  const std::uint64_t percent = std::min<std::uint64_t>(done * 100 / total_, 100);
  const std::string whole = bytes_ ? size(total_) : std::to_string(total_);
  if (done == 0 || elapsed.count() < 1) {
    return say("{}: {}% ({} of {})", {what_, std::to_string(percent), far, whole});
  }
  const auto left =
      std::chrono::seconds(elapsed.count() * (total_ - std::min(done, total_)) / done);
  return say("{}: {}% ({} of {}), about {} left",
             {what_, std::to_string(percent), far, whole, duration(left)});
}

// \r back to the start, the new text, blanks over what is left of the old one; an empty
// text clears the line and leaves the cursor at its start.
void Progress::draw(const std::string& text) {
  const std::lock_guard lock(mutex_);
  std::string out = "\r" + text;
  if (text.size() < drawn_) out += std::string(drawn_ - text.size(), ' ') + "\r";
  if (text.empty()) out += "\r";
  drawn_ = text.size();
  std::fwrite(out.data(), 1, out.size(), stderr);
  std::fflush(stderr);
}

CountingBuffer::int_type CountingBuffer::underflow() {
  const std::streamsize n = inner_.sgetn(buffer_, sizeof buffer_);
  if (n <= 0) return traits_type::eof();
  count_ += static_cast<std::uint64_t>(n);
  progress_.reach(count_);
  setg(buffer_, buffer_, buffer_ + n);
  return traits_type::to_int_type(buffer_[0]);
}

CountingBuffer::int_type CountingBuffer::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  const char one = traits_type::to_char_type(c);
  return xsputn(&one, 1) == 1 ? c : traits_type::eof();
}

std::streamsize CountingBuffer::xsputn(const char* s, std::streamsize n) {
  const std::streamsize written = inner_.sputn(s, n);
  count_ += static_cast<std::uint64_t>(std::max<std::streamsize>(written, 0));
  progress_.reach(count_);
  return written;
}

}  // namespace velmora::cli
