// One record or dictionary item of the sample account made odd or damaged by the fuzzer
// (marks, huge numbers, empty attributes, letters for digits, very long texts, a record
// gone), then Init and a planner's usual gestures: the control fails only through its
// documented failures, and its lists stay parallel.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <variant>
#include <vector>

#include <unistd.h>

#include <velmora/store/exchange.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/store/writer.h>
#include "control_player.h"

namespace {

using namespace velmora;
namespace fs = std::filesystem;

// The records and dictionary items of the sample account, as its exchange files hold them.
const std::vector<Batch::Change>& sampleChanges() {
  static const std::vector<Batch::Change> changes = [] {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(VELMORA_SAMPLE_DIR)) {
      if (entry.path().extension() == ".jsonl") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());  // the order that picks a record is the same anywhere
    std::vector<Batch::Change> kept;
    for (const auto& file : files) {
      std::ifstream in(file, std::ios::binary);
      const Batch batch = readExchange(in, file.string());
      for (const auto& change : batch.changes()) {
        if (!std::holds_alternative<Batch::CreateFile>(change)) kept.push_back(change);
      }
    }
    return kept;
  }();
  return changes;
}

// Values that a careless import or an old program leaves where a planner's data should be.
const std::vector<std::u16string_view> kOdd{
    u"",     u"0",  u"-1",      u"1.5",    u"99999999999999999999", u"1e999", u"abc",
    u" 30 ", u"00", u"0h30",    u"\uF8FD", u"\uF8FE\uF8FE",         u"*",     u"\"",
    u"[",    u"]",  u"SEMTYPE", u"FLOT"};

void damageRecord(Batch& batch, const Batch::PutRecord& put, fuzz::Bytes& in) {
  NorvikRecord record(put.body);
  switch (in.byte() % 5) {
    case 0:
      return batch.putRecord(put.file, put.key, NorvikRecord(in.text()));
    case 1:
      return batch.deleteRecord(put.file, put.key);
    default:
      break;
  }
  // Up to three attributes or values changed in the record as it stands.
  for (int n = in.byte() % 3; n >= 0; --n) {
    const int attribute = in.byte() % 24 + 1;
    const int value = in.byte() % 4;
    const std::uint8_t what = in.byte();
    if (what % 4 == 0) {
      record.Delete(attribute);
      continue;
    }
    const Text text = what % 4 == 1 ? in.text() : Text(kOdd[what / 4 % kOdd.size()]);
    if (value == 0) {
      record.set(attribute, text);
    } else {
      record.set(attribute, value, text);
    }
  }
  batch.putRecord(put.file, put.key, record);
}

void damageItem(Batch& batch, DictionaryItem item, fuzz::Bytes& in) {
  constexpr std::array odd{-2, -1, 0, 1, 2, 5, 17, 26, 999999, 1000000};
  const std::uint8_t what = in.byte();
  const int value = odd[in.byte() % std::size(odd)];
  if (what % 3 == 0) item.attribute = value;
  if (what % 3 == 1) item.keyStart = value;
  if (what % 3 == 2) item.keyLength = value;
  batch.defineItem(item);
}

// A planner's usual morning, in the player's bytes: mark two proposals and select them,
// edit the first selected duration to 25, write an observation, remove a row (Yes), tick
// and untick the show-all box, hand the selection to the host, empty it and show it again.
constexpr auto kUsualGestures =
    std::to_array<std::uint8_t>({1, 0,  1, 1,   5,   2,   0,   4, 0, 11, 2,  '2', '5', 6, 2,  0,
                                 9, 27, 4, 'N', 'o', 't', 'e', 8, 0, 14, 14, 15,  16,  0, 17, 0});

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<Batch::Change>& changes = sampleChanges();
  static const std::string copy =
      (fs::temp_directory_path() / ("velmora-fuzz-damaged-" + std::to_string(::getpid()) + ".db"))
          .string();
  fuzz::Bytes in(data, size);
  const std::size_t pick = (in.byte() << 8 | in.byte()) % changes.size();
  Batch batch;
  try {
    if (const auto* put = std::get_if<Batch::PutRecord>(&changes[pick])) {
      damageRecord(batch, *put, in);
    } else {
      damageItem(batch, std::get<DictionaryItem>(changes[pick]), in);
    }
  } catch (const Failure&) {
    return 0;  // the store refuses to hold it: nothing for the control to meet
  }
  fs::copy_file(fuzz::sampleStorePath(), copy, fs::copy_options::overwrite_existing);
  try {
    StoreWriter(copy, StoreWriter::Sync::Fast).apply(batch);
  } catch (const Failure&) {
    return 0;
  }
  {
    fuzz::Player player(openDatabase(copy), false);
    player.init(in);
    fuzz::Bytes usual(kUsualGestures.data(), kUsualGestures.size());
    while (player.step(usual)) {
    }
    for (int steps = 0; steps < 16 && player.step(in); ++steps) {
    }
  }
  fs::remove(copy);
  return 0;
}
