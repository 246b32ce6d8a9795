// Progress lines of the velmora tool: drawn on a terminal only, and in the messages'
// language. The work itself reports how far it is; a thread of the line redraws it.
#include "progress.h"

#include <sys/ioctl.h>
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
  ticker_ = std::jthread([this](const std::stop_token& stop) {
    std::mutex sleep;
    std::condition_variable_any wake;
    while (!stop.stop_requested()) {
      draw(line());
      std::unique_lock lock(sleep);
      wake.wait_for(lock, stop, std::chrono::milliseconds(250), [] { return false; });
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
  using std::chrono::duration_cast;
  const std::uint64_t done = done_.load(std::memory_order_relaxed);
  const auto elapsed =
      duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_);
  const std::string far = bytes_ ? size(done) : std::to_string(done);
  if (total_ == 0) {
    const auto seconds = duration_cast<std::chrono::seconds>(elapsed);
    if (done == 0) return say("{}: {} so far", {what_, duration(seconds)});
    return say("{}: {} done in {}", {what_, far, duration(seconds)});
  }
  const std::uint64_t percent = std::min<std::uint64_t>(done * 100 / total_, 100);
  const std::string whole = bytes_ ? size(total_) : std::to_string(total_);
  if (done == 0 || elapsed < std::chrono::seconds(1)) {
    return say("{}: {}% ({} of {})", {what_, std::to_string(percent), far, whole});
  }
  // At the pace so far.
  const auto left = std::chrono::milliseconds(static_cast<std::int64_t>(
      static_cast<double>(elapsed.count()) * static_cast<double>(total_ - std::min(done, total_)) /
      static_cast<double>(done)));
  return say("{}: {}% ({} of {}), about {} left",
             {what_, std::to_string(percent), far, whole,
              duration(duration_cast<std::chrono::seconds>(left))});
}

namespace {

// The text cut to the terminal's width (in characters), so that it never wraps: a wrapped
// line could not be rewritten by \r.
std::string fitted(const std::string& text) {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col < 2) return text;
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) continue;
    if (++characters == size.ws_col) return text.substr(0, i);
  }
  return text;
}

}  // namespace

// \r back to the start, the new text, blanks over what is left of the old one; an empty
// text clears the line and leaves the cursor at its start. The same text is not redrawn.
void Progress::draw(const std::string& wanted) {
  const std::lock_guard lock(mutex_);
  const std::string text = fitted(wanted);
  if (text == shown_ && !text.empty()) return;
  std::string out = "\r" + text;
  if (text.size() < shown_.size()) out += std::string(shown_.size() - text.size(), ' ') + "\r";
  shown_ = text;
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
