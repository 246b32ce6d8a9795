#include "control_player.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include <velmora/control/frm_ajout_obs_tache.h>
#include <velmora/store/sample_account.h>

namespace velmora::fuzz {

namespace {

// Init's arguments: the usual ones of the sample account, odd ones, or the fuzzer's text
// (the index one past the table).
const std::vector<std::u16string_view> kTypes{u"AUTRE", u"SSIAD", u"", u"autre"};
const std::vector<std::u16string_view> kCodes{
    u"00001", u"00002", u"00003", u"00004", u"00005", u"00006", u"00007", u"00008", u"00009",
    u"00010", u"00011", u"00012", u"00013", u"00014", u"", u"0000]", u"00\"01", u"99999", u"000011",
    u"00001FLOT", u"00002FLOT", u"FLOT", u"SEMTYPE",
    // planned interventions, fixed and floating templates: the consultation
    u"AG001000012151200010100850", u"AG001000022151200010200800", u"AG002000072151300010310850",
    u"AG001000052151400010420900", u"AG00100001", u"00001211860085001SEMTYPE",
    u"00002210641180001SEMTYPE", u"00014214594080001SEMTYPE", u"0000121186100001SEMTYPEFLOT",
    u"0000221064190001SEMTYPEFLOT", u"00001FLOTSEMTYPE"};
const std::vector<std::u16string_view> kDates{
    u"23/11/2026", u"25/11/2026", u"27/11/2026", u"01/01/2027", u"",          u"31/02/2026",
    u"abc",        u"21512",      u"23/11/26",   u"99/99/9999", u"-1/01/2026"};
const std::vector<std::u16string_view> kEndDates{u"", u"30/11/2026", u"01/01/2020", u"abc"};
const std::vector<std::array<std::u16string_view, 2>> kTimes{
    {u"08:30", u"10:00"}, {u"00:00", u"23:59"}, {u"14:00", u"15:30"},
    {u"08:00", u"08:45"}, {u"", u""},           {u"25:99", u"99:99"},
    {u"8.5", u"10"},      {u"10:00", u"08:30"}, {u"ab:cd", u"-1"}};
const std::vector<std::u16string_view> kDays{u"1000000", u"0010000", u"0000100", u"0000001",
                                             u"0100000", u"",        u"abc",     u"11111111",
                                             u"9",       u"1111111"};
// Item codes for a host's W_Aff: tasks and care acts of the account, and a stale one.
const std::vector<std::u16string_view> kItems{
    u"Aide au lever", u"Repassage",    u"Aspirateur",          u"010101",
    u"010301",        u"Conversation", u"Lavage de la voiture"};

Text pick(Bytes& in, const std::vector<std::u16string_view>& table) {
  const std::size_t i = in.byte() % (table.size() + 1);
  return i < table.size() ? Text(table[i]) : in.text();
}

cli::Step line(cli::Step::Kind kind, std::vector<std::string> words, int row = -1) {
  cli::Step step;
  step.kind = kind;
  step.words = std::move(words);
  step.row = row;
  return step;
}

Text selectedDuration(const toolkit::ListBox& list, int row) {
  return trimBlanks(mid(list.List(row), 81, 5));
}

// The read-back of the total's display form: minutes before the first "h" times 60, plus
// those after it.
std::optional<double> readBack(const Text& shown) {
  const auto h = shown.find(u'h');
  if (h == Text::npos) return std::nullopt;
  const auto hours = parseNumber(TextView(shown).substr(0, h));
  const auto minutes = parseNumber(TextView(shown).substr(h + 1));
  if (!hours || !minutes) return std::nullopt;
  return *hours * 60 + *minutes;
}

// A fault: something the documentation does not allow. Traps, so that libFuzzer keeps
// the input; the message says which promise broke.
[[noreturn]] void fault(const std::string& what) {
  std::fprintf(stderr, "fault: %s\n", what.c_str());
  __builtin_trap();
}

// A failure the control or the store documents, with a message, or a fault.
void expectDocumented(long number, std::string_view message) {
  namespace e = errors;
  for (const long documented :
       {e::kRecordNotFound, e::kObjectNotSet, e::kTypeMismatch, e::kInvalidCall, e::kOverflow,
        e::kUnknownFile, e::kBadQuery, e::kUnknownName, e::kDatabase, e::kBusy}) {
    if (number != documented) continue;
    if (message.find_first_not_of(": ") == std::string_view::npos) {
      fault("a failure without a message");
    }
    return;
  }
  fault("undocumented failure " + std::to_string(number) + ": " + std::string(message));
}

}  // namespace

// The store file of this process, removed when the process ends (but for a crash).
struct SampleStore {
  std::string path = (std::filesystem::temp_directory_path() /
                      ("velmora-fuzz-sample-" + std::to_string(::getpid()) + ".db"))
                         .string();
  SampleStore() { buildSampleDatabase(path, VELMORA_SAMPLE_DIR); }
  ~SampleStore() { std::filesystem::remove(path); }
  SampleStore(const SampleStore&) = delete;
  SampleStore& operator=(const SampleStore&) = delete;
};

const std::string& sampleStorePath() {
  static const SampleStore store;
  return store.path;
}

Text Bytes::text() {
  const std::size_t length = byte();
  const std::size_t piece = length < 200 ? length : length - 200;
  Text out;
  for (std::size_t i = 0; i < piece && !empty(); ++i) {
    const std::uint8_t b = byte();
    out.push_back(b == 1   ? kAttributeMark
                  : b == 2 ? kValueMark
                  : b == 3 ? kSubvalueMark
                  : b == 4 ? char16_t{0xD800}
                           : char16_t{b});
  }
  if (length >= 200) {
    const Text unit = out;
    for (int n = byte() * 16; n > 0; --n) out += unit;
  }
  return out;
}

Player::Player(DatabaseRef database, bool checkTotal)
    : checkTotal_(checkTotal), player_(std::move(database), true) {}

Player::~Player() {
  // The observations dialog is one instance for the process: leave it closed.
  Frm_AjoutObsTache& dialog = DefaultFrm_AjoutObsTache();
  if (dialog.isLoaded()) {
    try {
      dialog.Cmd_AnnulerObs.press();
    } catch (const Failure&) {
    }
  }
}

void Player::init(Bytes& in) {
  std::vector<std::string> a;
  for (const auto* table : {&kTypes, &kCodes, &kDates, &kEndDates}) {
    a.push_back(toUtf8(pick(in, *table)));
  }
  const std::size_t t = in.byte() % (kTimes.size() + 1);
  for (const std::size_t i : {0, 1}) {
    a.push_back(toUtf8(t < kTimes.size() ? Text(kTimes[t][i]) : in.text()));
  }
  a.push_back(toUtf8(pick(in, kDays)));
  clean_ = true;
  play(line(cli::Step::Kind::Init, std::move(a)));
  // A consultation that fails part way is given up inside Init (documented): W_Total then
  // holds the first pass's sum with an empty Txt_Duree. The sum is promised only where
  // the control shows its total consistent.
  const Text& shown = player_.control().Txt_Duree.getText();
  const double total = player_.control().W_Total.toDouble();
  const auto minutes = readBack(shown);
  summed_ = checkTotal_ && (shown.empty() ? total == 0 : minutes && *minutes == total);
}

// The lines of one gesture or host call; Init is played at once.
std::vector<cli::Step> Player::decode(std::uint8_t op, Bytes& in) {
  using K = cli::Step::Kind;
  const Ctr_VelmoraNew& c = player_.control();
  const auto row = [&in](const toolkit::ListBox& list) {
    return list.ListCount() == 0 ? 0 : in.byte() % list.ListCount();
  };
  switch (op % 18) {
    case 0:
      init(in);
      return {};
    case 1:
      return {line(K::Click, {"possible"}, row(c.Lst_Possible))};
    case 2:
      return {line(K::Click, {"selected"}, row(c.Lst_Selectionne))};
    case 3:
      return {line(K::DoubleClick, {"possible"}, row(c.Lst_Possible))};
    case 4:
      return {line(K::DoubleClick, {"selected"}, row(c.Lst_Selectionne))};
    case 5:
    case 6:
    case 7:
      return {line(K::Press, {std::array{"select", "ok", "cancel"}[op % 18 - 5]})};
    case 8: {
      // The question before a removal: Yes, No, or left without an answer.
      const int answer = in.byte() % 3;
      if (answer == 2) return {line(K::Press, {"remove"})};
      return {line(K::Answer, {answer == 0 ? "yes" : "no"}), line(K::Press, {"remove"})};
    }
    case 9: {
      // Maybe a text, then up to three buttons of the dialog: its close box, Ok, Annuler.
      const std::uint8_t how = in.byte();
      cli::Step observation = line(K::Observation, {});
      observation.hasText = (how & 1) != 0;
      if (observation.hasText) observation.words.push_back(toUtf8(in.text()));
      for (int i = 0, b = how >> 1; i < 3 && (b & 3) != 3; ++i, b >>= 2) {
        observation.words.emplace_back(std::array{"close", "ok", "cancel"}[b & 3]);
      }
      return {observation, line(K::Press, {"obs"})};
    }
    case 10:
      return {line(K::Type, {toUtf8(in.text())})};
    case 11:
      return {line(K::Paste, {toUtf8(in.text())})};
    case 12:
      // A key as the keyboard gives it: digits, backspace, letters, anything.
      return {line(K::Type, {toUtf8(Text(1, char16_t{in.byte()}))})};
    case 13:
      return {line(K::Clear, {})};
    case 14:
      summed_ = false;  // unticking may zero the total and keep the selection
      return {line(K::Tick, {})};
    case 15:
      return {line(K::Host, {"maj-enr"})};
    case 16:
      summed_ = false;  // the host's emptying and fills set the total apart
      return {line(K::Host, {in.byte() % 2 == 0 ? "vider-tache" : "vider-liste"})};
    default: {
      // Affiche of what MAJ_Enr gave, or of items the host makes up.
      summed_ = false;
      const int count = in.byte() % 5;
      if (count == 0 && c.W_Enr.empty()) return {};
      std::vector<std::string> words{"affiche"};
      for (int i = 1; i <= count; ++i) {
        for (const Text& word : {pick(in, kItems), in.text(), in.text()}) {
          words.push_back(toUtf8(word));
        }
      }
      return {line(K::Host, std::move(words))};
    }
  }
}

// Plays a line; the player notes a failure as "error NUMBER: MESSAGE" and goes on, as a
// host shows it and goes on.
void Player::play(const cli::Step& step) {
  const int failures = player_.failures();
  try {
    player_.step(step);
  } catch (const std::exception& e) {
    fault(std::string("an exception that is no Failure: ") + e.what());
  }
  if (player_.failures() == failures) return;
  clean_ = false;
  const auto messages = player_.seen()["messages"];
  for (; messagesSeen_ < messages.size(); ++messagesSeen_) {
    const std::string text = messages[messagesSeen_]["text"];
    const auto space = text.find(' ');
    if (space == std::string::npos) continue;
    long number = 0;
    const char* const end = text.data() + text.size();
    const auto [after, error] = std::from_chars(text.data() + space + 1, end, number);
    // The other notes say that a gesture did nothing (a disabled control, no such row).
    if (error != std::errc{} || after == end || (*after != ':' && *after != ' ')) continue;
    expectDocumented(number, std::string_view(after, end));
  }
}

bool Player::step(Bytes& in) {
  if (in.empty()) return false;
  const std::uint8_t op = in.byte();
  const Ctr_VelmoraNew& c = player_.control();
  const Text before = c.Txt_Duree.getText();
  for (const cli::Step& step : decode(op, in)) play(step);
  if (!clean_) return true;
  if (c.Lst_CodePos.ListCount() != c.Lst_Possible.ListCount() ||
      c.Lst_CodeSelect.ListCount() != c.Lst_Selectionne.ListCount()) {
    fault("a code list out of step with its list");
  }
  if (op % 18 == 15) checkRecord();
  const Text& after = c.Txt_Duree.getText();
  // The documented total: a Txt_Duree that a step wrote anew reads back as W_Total, but
  // for the 0h00 that a removal writes into an empty box without touching W_Total.
  if (checkTotal_ && after != before && !after.empty() && !(before.empty() && after == u"0h00")) {
    const auto minutes = readBack(after);
    if (!minutes || std::abs(*minutes - c.W_Total.toDouble()) > 1e-9) {
      fault("Txt_Duree " + toUtf8(after) + " while W_Total is " + toUtf8(c.W_Total.toText()));
    }
  }
  if (summed_) checkSum();
  return true;
}

// From Init on, while each gesture adds or takes off its row's duration, W_Total is the
// sum of the selection's durations.
void Player::checkSum() const {
  const Ctr_VelmoraNew& c = player_.control();
  double sum = 0;
  for (int i = 0; i < c.Lst_Selectionne.ListCount(); ++i) {
    const Text d = selectedDuration(c.Lst_Selectionne, i);
    if (d.empty()) continue;
    const auto minutes = parseNumber(d);
    if (!minutes) return;  // not a duration the sample account holds
    sum += *minutes;
  }
  if (std::abs(sum - c.W_Total.toDouble()) > 1e-9) {
    fault("W_Total " + toUtf8(c.W_Total.toText()) + " for a selection of " + std::to_string(sum) +
          " minutes");
  }
}

// W_Enr after MAJ_Enr: one item a selected row, in order, with the row's duration.
void Player::checkRecord() const {
  const Ctr_VelmoraNew& c = player_.control();
  const toolkit::ListBox& rows = c.Lst_Selectionne;
  if (c.W_Enr.empty()) fault("MAJ_Enr left no W_Enr");
  if (rows.ListCount() > 0 && c.W_Enr->DCount() != rows.ListCount()) {
    fault("W_Enr has " + std::to_string(c.W_Enr->DCount()) + " items for " +
          std::to_string(rows.ListCount()) + " selected rows");
  }
  for (int n = 1; n <= rows.ListCount(); ++n) {
    if (c.W_Enr->r(n, 2) != selectedDuration(rows, n - 1)) {
      fault("item " + std::to_string(n) + " of W_Enr has the duration \"" +
            toUtf8(c.W_Enr->r(n, 2)) + "\", its row \"" + toUtf8(rows.List(n - 1)) + "\"");
    }
  }
}

}  // namespace velmora::fuzz
