// What the control's fuzz targets share: the sample account built once per process, a
// reader of the fuzzer's bytes, and a player that turns them into the host's calls and
// the planner's gestures on a control, checking after each what the documentation
// promises a host: only documented failures, parallel lists, a total that agrees with
// its text, a W_Enr that mirrors the selection.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <velmora/base/failure.h>
#include <velmora/control/ctr_velmora_new.h>
#include <velmora/store/database.h>
#include <velmora/toolkit/services.h>

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

  // Plays one call or gesture decoded from the bytes; false when they are used up.
  bool step(Bytes& in);
  // Init with arguments decoded from the bytes.
  void init(Bytes& in);

 private:
  void run(std::uint8_t op, Bytes& in);
  void host(std::uint8_t op, Bytes& in);
  void observation(Bytes& in);
  void checkInvariants() const;
  void checkSum() const;
  void checkRecord() const;

  DatabaseRef database_;
  bool checkTotal_;
  Session session_;
  Ctr_VelmoraNew control_{session_};
  std::shared_ptr<toolkit::ScriptedServices> services_;
  // No failure since the last Init: the state is one the documented operations made.
  bool clean_ = true;
  // W_Total is the sum of the selection's durations: from a clean Init, until a step that
  // the documentation lets set them apart (emptying, the show-all switch, a host's fill).
  bool summed_ = false;
};

}  // namespace velmora::fuzz
