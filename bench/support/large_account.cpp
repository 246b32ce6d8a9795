#include "support/large_account.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include <velmora/base/text.h>
#include <velmora/store/record.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/store/writer.h>
#include "store/engine/account_layout.h"

#ifndef VELMORA_LARGE_ACCOUNT
#define VELMORA_LARGE_ACCOUNT "/tmp/velmora-large-account.db"
#endif

namespace velmora::bench {

namespace {

// A small deterministic generator, so that every run builds the same account.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : state_(seed) {}
  int below(int n) {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<int>((state_ >> 33) % static_cast<std::uint64_t>(n));
  }
  template <class T, std::size_t N>
  const T& pick(const std::array<T, N>& from) {
    return from[static_cast<std::size_t>(below(static_cast<int>(N)))];
  }

 private:
  std::uint64_t state_;
};

Text number(long long n) {
  return numberText(n);
}

Text digits(long long n, int width) {
  Text text = numberText(n);
  return Text(static_cast<std::size_t>(width) - std::min<std::size_t>(width, text.size()), u'0') +
         text;
}

constexpr std::array<const char16_t*, 16> kActHeads = {
    u"Toilette",     u"Pansement",  u"Surveillance", u"Injection",   u"Prévention", u"Aide",
    u"Installation", u"Évaluation", u"Soins",        u"Transfert",   u"Change",     u"Préparation",
    u"Éducation",    u"Prise",      u"Mobilisation", u"Coordination"};
constexpr std::array<const char16_t*, 16> kActTails = {
    u"au lit",          u"du pied",   u"de la jambe", u"des mains",         u"post-opératoire",
    u"simple",          u"complexe",  u"du soir",     u"du matin",          u"de confort",
    u"à domicile",      u"avec aide", u"en fauteuil", u"sous surveillance", u"de l'aidant",
    u"du patient alité"};

Text actCode(int n) {
  // Spread over 90 regroupments and 100 types in each, so that every level is used.
  const int regroupment = 10 + n % 90;
  const int type = (n / 90) % 100;
  const int act = n / 9000;
  return digits(regroupment, 2) + digits(type, 2) + digits(act, 2);
}

Text taskCode(int n) {
  return u"Tâche " + digits(n, 5);
}
Text groupCode(int n) {
  return u"Groupe " + digits(n, 4);
}
Text typeCode(int n) {
  return u"Type " + digits(n, 2);
}

void putCatalogues(Batch& batch, const LargeAccountShape& shape, Dice& dice) {
  for (int r = 10; r < 100; ++r) {
    NorvikRecord record;
    record.appendAttribute({u"Regroupement " + number(r)});
    batch.putRecord(u"SSIADREGROUPSOINS", digits(r, 2), record);
  }
  for (int r = 10; r < 100; ++r) {
    for (int t = 0; t < 100; ++t) {
      NorvikRecord record;
      record.appendAttribute({u"Type de soins " + number(r) + u"." + number(t)});
      batch.putRecord(u"SSIADTYPESOINS", digits(r, 2) + digits(t, 2), record);
    }
  }
  for (int n = 0; n < shape.acts; ++n) {
    NorvikRecord record;
    record.appendAttribute({Text(dice.pick(kActHeads)) + u" " + dice.pick(kActTails) + u" n° " +
                            number(1 + dice.below(999))});
    record.appendAttribute({});
    record.appendAttribute({});
    record.appendAttribute({number(5 * (1 + dice.below(12)))});
    batch.putRecord(u"SSIADSOINS", actCode(n), record);
  }
  for (int t = 0; t < shape.types; ++t) {
    NorvikRecord record;
    record.appendAttribute({number(dice.below(1000))});
    batch.putRecord(u"TYPETACHE", typeCode(t), record);
  }
  for (int g = 0; g < shape.groups; ++g) {
    NorvikRecord record;
    record.appendAttribute({number(dice.below(1000))});
    record.appendAttribute({typeCode(g % shape.types)});
    batch.putRecord(u"GROUPETACHE", groupCode(g), record);
  }
  for (int k = 0; k < shape.tasks; ++k) {
    NorvikRecord record;
    record.appendAttribute({number(dice.below(1000))});
    record.appendAttribute({groupCode(k % shape.groups)});
    record.appendAttribute({});
    record.appendAttribute({dice.below(20) == 0 ? u"O" : u"N"});
    record.appendAttribute({number(5 * (1 + dice.below(12)))});
    batch.putRecord(u"TACHE", taskCode(k), record);
  }
  NorvikRecord param;
  for (int a = 1; a < 20; ++a) param.appendAttribute({});
  param.appendAttribute({u"0"});
  batch.putRecord(u"TPSPARAM", u"1", param);
}

// Parallel item attributes 4, 5 and 8 of a template, with the kind in attribute 3.
NorvikRecord templateRecord(bool care, const LargeAccountShape& shape, Dice& dice,
                            const Text& endTime) {
  std::vector<Text> items;
  std::vector<Text> durations;
  std::vector<Text> observations;
  const int count = 3 + dice.below(4);
  for (int i = 0; i < count; ++i) {
    items.push_back(care ? actCode(dice.below(shape.acts)) : taskCode(dice.below(shape.tasks)));
    durations.push_back(number(5 * (1 + dice.below(12))));
    observations.push_back(dice.below(4) == 0 ? Text(u"Voir le cahier de liaison") : Text());
  }
  NorvikRecord record;
  record.appendAttribute({dice.below(10) == 0 ? Text(u"21429") : Text()});
  record.appendAttribute({endTime});
  record.appendAttribute({care ? u"S" : u"A"});
  record.appendAttribute(std::move(items));
  record.appendAttribute(std::move(durations));
  record.appendAttribute({});
  record.appendAttribute({});
  record.appendAttribute(std::move(observations));
  return record;
}

void putClient(Batch& batch, int clientNumber, const LargeAccountShape& shape, Dice& dice) {
  const Text client = fromUtf8(clientCode(clientNumber));
  const bool care = clientNumber % 2 == 0;
  constexpr std::array<const char16_t*, 4> kStarts = {u"21064", u"21186", u"21459", u"21551"};
  constexpr std::array<const char16_t*, 3> kSlots = {u"0800", u"1400", u"1800"};
  constexpr std::array<const char16_t*, 3> kSlotEnds = {u"0950", u"1550", u"1950"};
  for (int j = 0; j < shape.fixedTemplatesPerClient; ++j) {
    const auto slot = static_cast<std::size_t>((j / 7) % 3);
    const Text key = client + dice.pick(kStarts) + number(j % 7) + kSlots[slot] + u"01";
    batch.putRecord(u"TPSSEMAINETYPE", key, templateRecord(care, shape, dice, kSlotEnds[slot]));
  }
  constexpr std::array<const char16_t*, 5> kFloatingStarts = {u"0700", u"1000", u"1200", u"1700",
                                                              u"1900"};
  constexpr std::array<const char16_t*, 5> kDays = {u"024", u"13", u"0123456", u"5", u"246"};
  for (int j = 0; j < shape.floatingTemplatesPerClient; ++j) {
    const auto slot = static_cast<std::size_t>(j % 5);
    const Text key = client + dice.pick(kStarts) + kFloatingStarts[slot] + digits(j / 5 + 1, 2);
    NorvikRecord record = templateRecord(care, shape, dice, u"2000");
    record.set(10, dice.pick(kDays));
    batch.putRecord(u"TPSSEMAINETYPEFLOT", key, record);
  }
  for (int j = 0; j < shape.taskListsPerClient; ++j) {
    std::vector<Text> tasks;
    std::vector<Text> durations;
    const int count = 5 + dice.below(4);
    for (int i = 0; i < count; ++i) {
      tasks.push_back(taskCode(dice.below(shape.tasks)));
      durations.push_back(dice.below(8) == 0 ? Text() : number(5 * (1 + dice.below(12))));
    }
    NorvikRecord record;
    record.appendAttribute(std::move(tasks));
    record.appendAttribute(std::move(durations));
    batch.putRecord(u"AIDEDETAILTACHE", client + number(20000 + 60 * j), record);
  }
}

}  // namespace

std::string clientCode(int number) {
  char code[16];
  std::snprintf(code, sizeof code, "%05d", number);
  return code;
}

void writeLargeAccount(const std::string& path, const LargeAccountShape& shape) {
  const std::string building = path + ".building";
  std::filesystem::remove(building);
  {
    StoreWriter writer(building);
    Dice dice(20261123);
    Batch catalogues = standardLayout();
    putCatalogues(catalogues, shape, dice);
    writer.apply(catalogues);
    constexpr int kClientsPerBatch = 2500;
    for (int first = 1; first <= shape.clients; first += kClientsPerBatch) {
      Batch clients;
      for (int n = first; n < first + kClientsPerBatch && n <= shape.clients; ++n) {
        putClient(clients, n, shape, dice);
      }
      writer.apply(clients);
    }
  }
  std::filesystem::rename(building, path);
}

std::string largeAccount() {
  const char* fromEnvironment = std::getenv("VELMORA_LARGE_ACCOUNT");
  const std::string path = fromEnvironment != nullptr && *fromEnvironment != '\0'
                               ? fromEnvironment
                               : VELMORA_LARGE_ACCOUNT;
  if (!std::filesystem::exists(path)) {
    const auto start = std::chrono::steady_clock::now();
    std::fprintf(stderr, "building the large account in %s ...\n", path.c_str());
    writeLargeAccount(path);
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "large account built in %.1f s\n", spent.count());
  }
  return path;
}

DatabaseRef largeAccountDatabase() {
  static const DatabaseRef database = openDatabase(largeAccount());
  return database;
}

}  // namespace velmora::bench
