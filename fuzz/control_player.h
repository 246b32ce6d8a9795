// What the control's fuzz targets share: the sample account built once per process, a
// reader of the fuzzer's bytes, and a player that decodes them into the lines of a play
// script, plays them with the tool's player (apps/velmora/play_player.h), and checks
// after each what the documentation promises a host: only documented failures, parallel
// lists, a total that agrees with its text, a W_Enr that mirrors the selection.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <velmora/base/text.h>
#include <velmora/store/database.h>
#include "play_player.h"

namespace velmora::fuzz {

// The sample account of data/sample as a store file of this process, built at first call.
const std::string& sampleStorePath();

// Reads the fuzzer's bytes from the front; past the end every byte is 0 and texts are "".
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool empty() const { return next_ >= size_; }
  std::uint8_t byte() { return empty() ? 0 : data_[next_++]; }
  // A length byte then the text, one character a byte: 1, 2 and 3 are the record's
  // attribute, value and subvalue marks, 4 a lone surrogate, 0x80-0xFF Latin-1 (é…). A
  // length of 200 or more repeats a short piece up to some thousands of characters.
  Text text();

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t next_ = 0;
};

class Player {
 public:
  // checkTotal: whether W_Total must agree with Txt_Duree (not with damaged records, whose
  // fractional durations the consultation adds without the read-back).
  Player(DatabaseRef database, bool checkTotal);
  ~Player();
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  // Plays the lines of one gesture or host call decoded from the bytes; false when they
  // are used up.
  bool step(Bytes& in);
  // Init with arguments decoded from the bytes.
  void init(Bytes& in);

 private:
  std::vector<cli::Step> decode(std::uint8_t op, Bytes& in);
  void play(const cli::Step& step);
  void checkSum() const;
  void checkRecord() const;

  bool checkTotal_;
  cli::Player player_;
  std::size_t messagesSeen_ = 0;
  // No failure since the last Init: the state is one the documented operations made.
  bool clean_ = true;
  // W_Total is the sum of the selection's durations: from a clean Init, until a step that
  // the documentation lets set them apart (emptying, the show-all switch, a host's fill).
  bool summed_ = false;
};

}  // namespace velmora::fuzz
