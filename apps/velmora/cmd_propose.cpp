// velmora propose and velmora consult: the control without a screen. Each creates the
// control on a read-only connection, calls Init as a host would and prints what the
// planner would see.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <iostream>
#include <memory>
#include <string_view>

#include <velmora/base/failure.h>
#include <velmora/control/client_code.h>
#include <velmora/control/ctr_velmora_new.h>
#include <velmora/store/dates.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/toolkit/services.h>
#include "base/message.h"
#include "command.h"
#include "report.h"

namespace velmora::cli {

namespace {

Text kindOf(Arguments& args) {
  const std::string kind = args.option("kind").value_or("AUTRE");
  if (kind != "AUTRE" && kind != "SSIAD") {
    throw UsageError(say("--kind is AUTRE or SSIAD, not \"{}\"", {excerpt(kind)}));
  }
  return fromUtf8(kind);
}

// A date as the planner writes it; checked here so that a mistake is named, not
// silently turned into an empty search.
Text dateOption(Arguments& args, const char* name, const Text& fallback, bool mayBeEmpty) {
  const auto given = args.option(name);
  if (!given) return fallback;
  if (given->empty() && !mayBeEmpty) {
    throw UsageError(say("--{} needs a date, as 23/11/2026", {name}));
  }
  Text date = fromUtf8(*given);
  try {
    NorvikDates().TexteVersDate(date);
  } catch (const Failure&) {
    throw UsageError(
        say("--{} \"{}\" is not a date of the calendar; write dd/mm/yyyy or "
            "yyyy-mm-dd, as 23/11/2026",
            {name, excerpt(*given)}));
  }
  return date;
}

Text today() {
  const auto now = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
  const std::chrono::year_month_day ymd{now};
  return NorvikDates().DateVersTexte(
      numberText(daysFromCivil(int(ymd.year()), static_cast<int>(unsigned(ymd.month())),
                               static_cast<int>(unsigned(ymd.day())))));
}

// Weekday of a date text: 0 is lundi. Day 0 of the store, 31/12/1967, was a Sunday.
int weekdayOf(const Text& date) {
  const long days = static_cast<long>(*parseNumber(NorvikDates().TexteVersDate(date)));
  return static_cast<int>(((days + 6) % 7 + 7) % 7);
}

Text daysOption(Arguments& args, const Text& from) {
  const auto given = args.option("days");
  if (!given) {
    Text mask(7, u'0');
    mask[static_cast<std::size_t>(weekdayOf(from))] = u'1';
    return mask;
  }
  const bool digits =
      std::all_of(given->begin(), given->end(), [](char c) { return c == '0' || c == '1'; });
  if (given->empty() || given->size() > 7 || !digits) {
    throw UsageError(say("--days is a mask of up to 7 digits 0 or 1, Monday first, not \"{}\"",
                         {excerpt(*given)}));
  }
  return fromUtf8(*given);
}

// The parameter of TPSPARAM says whether the host writes times as HH:MM or as decimal
// hours; without --time the whole day is searched, in the form the store expects.
bool decimalTimes(const DatabaseRef& db) {
  try {
    return db->OpenFile(u"TPSPARAM")->ReadRecord(u"1")->r(20) == u"1";
  } catch (const Failure& failure) {
    if (failure.number() == errors::kRecordNotFound) return false;
    throw;
  }
}

// A time as the host hands it over: HH:MM (or H:MM) within a day, or decimal hours from
// 0 to 23.99 with "." or "," when the account says so.
bool timeOfDay(const Text& t, bool decimal) {
  const std::string s = toUtf8(t);
  const auto digits = [](std::string_view v) {
    return !v.empty() &&
           std::all_of(v.begin(), v.end(), [](char c) { return c >= '0' && c <= '9'; });
  };
  const auto value = [](std::string_view v) {
    int n = 0;
    std::from_chars(v.data(), v.data() + v.size(), n);
    return n;
  };
  if (decimal) {
    const auto point = s.find_first_of(".,");
    const std::string_view whole = std::string_view(s).substr(0, point);
    const std::string_view part =
        point == std::string::npos ? std::string_view("0") : std::string_view(s).substr(point + 1);
    return digits(whole) && whole.size() <= 2 && value(whole) <= 23 && digits(part) &&
           part.size() <= 2;
  }
  const auto colon = s.find(':');
  if (colon == std::string::npos) return false;
  const std::string_view hours = std::string_view(s).substr(0, colon);
  const std::string_view minutes = std::string_view(s).substr(colon + 1);
  return digits(hours) && hours.size() <= 2 && value(hours) <= 23 && digits(minutes) &&
         minutes.size() == 2 && value(minutes) <= 59;
}

void timeOption(Arguments& args, const DatabaseRef& db, Text& from, Text& to) {
  const auto given = args.option("time");
  if (!given) {
    const bool decimal = decimalTimes(db);
    from = decimal ? u"0" : u"00:00";
    to = decimal ? u"23.99" : u"23:59";
    return;
  }
  const auto dash = given->find('-');
  if (dash == std::string::npos || dash == 0 || dash + 1 == given->size() ||
      given->find('-', dash + 1) != std::string::npos) {
    throw UsageError(
        say("--time is FROM-TO, as 08:30-10:00 or 8.5-10, not \"{}\"", {excerpt(*given)}));
  }
  from = fromUtf8(given->substr(0, dash));
  to = fromUtf8(given->substr(dash + 1));
  const bool decimal = decimalTimes(db);
  for (const Text* t : {&from, &to}) {
    if (!timeOfDay(*t, decimal)) {
      throw UsageError(
          decimal ? say("--time: \"{}\" is not a time of day; write decimal hours from 0 to "
                        "23.99, as 8.5-10 (TPSPARAM \"1\" attribute 20 says which)",
                        {excerpt(toUtf8(*t))})
                  : say("--time: \"{}\" is not a time of day; write HH:MM from 00:00 to 23:59, "
                        "as 08:30-10:00 (TPSPARAM \"1\" attribute 20 says which)",
                        {excerpt(toUtf8(*t))}));
    }
  }
}

// Creates the control as a host does, runs Init and prints the result.
int showControl(const DatabaseRef& db, InitArguments& init, bool json) {
  Session session;
  Ctr_VelmoraNew control(session);
  control.setServices(std::make_shared<toolkit::ScriptedServices>());
  control.TheDatabase(db);
  control.Init(init);
  if (json) {
    std::cout << reportJson(control).dump(2) << "\n";
  } else {
    printReport(std::cout, control);
  }
  return 0;
}

int propose(Arguments& args) {
  const std::string path = requiredDatabase(args);
  const Text kind = kindOf(args);
  const auto client = args.option("client");
  if (!client) throw UsageError(say("--client CODE is required"));
  if (const auto refusal = clientCodeRefusal(*client)) {
    throw UsageError(say("--client {}", {*refusal}));
  }
  const Text code = fromUtf8(*client);
  const Text from = dateOption(args, "from", today(), false);
  const Text to = dateOption(args, "to", u"", true);
  const Text days = daysOption(args, from);
  const bool floating = args.flag("floating");
  const bool json = args.flag("json");
  const DatabaseRef db = openDatabase(path);
  Text heureDe;
  Text heureA;
  timeOption(args, db, heureDe, heureA);
  args.positionals(0, 0);
  if (!clientKnown(db, code)) {
    throw Failure(
        errors::kRecordNotFound,
        say("unknown client \"{}\": no client record, task list or template names it", {*client}));
  }
  InitArguments init{kind, floating ? code + u"FLOT" : code, from, to, heureDe, heureA, days};
  return showControl(db, init, json);
}

// The date that a key names: the intervention's start for a detail key, the template's
// start for a template key.
Text keyDate(const Text& key) {
  const bool isTemplate = instr(key, u"SEMTYPE") > 0;
  try {
    return NorvikDates().DateVersTexte(mid(key, isTemplate ? 6 : 11, 5));
  } catch (const Failure&) {
    return {};
  }
}

// The file and key of the record that Init reads for a full key.
std::pair<Text, Text> recordOfKey(const Text& code) {
  const bool isTemplate = instr(code, u"SEMTYPE") > 0;
  const bool floating = instr(code, u"FLOT") > 0;
  if (isTemplate) {
    return floating ? std::pair<Text, Text>{u"TPSSEMAINETYPEFLOT", mid(code, 1, 16)}
                    : std::pair<Text, Text>{u"TPSSEMAINETYPE", mid(code, 1, 17)};
  }
  return {u"TPSDETAILSINTERV",
          floating ? left(code, static_cast<std::ptrdiff_t>(code.size()) - 4) : code};
}

int consult(Arguments& args) {
  const std::string path = requiredDatabase(args);
  const Text kind = kindOf(args);
  const auto key = args.option("key");
  if (!key || key->empty()) throw UsageError(say("--key FULLKEY is required"));
  const Text code = fromUtf8(*key);
  if (code.size() == 5 || (code.size() == 9 && instr(code, u"FLOT") > 0)) {
    throw UsageError(say("--key is a full key; for a client code use velmora propose"));
  }
  if (code.find_first_of(u"\"[]") != Text::npos) {
    throw UsageError(
        say("--key holds a double quote or a bracket; the control would write it "
            "into its queries, where it changes what they select"));
  }
  const Text date = dateOption(args, "date", keyDate(code), true);
  const bool json = args.flag("json");
  args.positionals(0, 0);
  const DatabaseRef db = openDatabase(path);
  const auto [file, recordKey] = recordOfKey(code);
  try {
    db->OpenFile(file)->ReadRecord(recordKey);
  } catch (const Failure& failure) {
    if (failure.number() != errors::kRecordNotFound) throw;
    throw Failure(
        errors::kRecordNotFound,
        say("unknown key \"{}\": {} has no record \"{}\"; check the key (velmora "
            "query --db {} 'SSELECT {}')",
            {excerpt(*key), toUtf8(file), excerpt(toUtf8(recordKey)), path, toUtf8(file)}));
  }
  InitArguments init{kind, code, date, u"", u"", u"", u""};
  return showControl(db, init, json);
}

}  // namespace

const Command& proposeCommand() {
  static const Command command{
      "propose", toSay("show what the control proposes for a client"),
      toSay("Usage: velmora propose --db PATH --client CODE [--kind AUTRE|SSIAD] [--from DATE]\n"
            "                       [--to DATE] [--time FROM-TO] [--days MASK] [--floating] "
            "[--json]\n"
            "  Runs the control on the store as a host would for a bare client code and prints\n"
            "  what the planner would see: the column captions, the rows of both lists between\n"
            "  \"|\" with the code behind each row, the observations, the total and the\n"
            "  mandatory indicator.\n"
            "  --kind      AUTRE (home help, the default) or SSIAD (care acts)\n"
            "  --from      first day, dd/mm/yyyy or yyyy-mm-dd; today by default\n"
            "  --to        last day; none by default\n"
            "  --time      the time slot as the store's parameter wants it: 08:30-10:00, or\n"
            "              8.5-10 in decimal hours; the whole day by default\n"
            "  --days      weekday mask, Monday first: 1000000 is Monday; by default the weekday\n"
            "              of --from\n"
            "  --floating  search the floating templates only\n"
            "  --json      print a JSON object instead\n"
            "  A client that no client record (BESOINSAIDE), task list or template names is an\n"
            "  error.\n"),
      &propose};
  return command;
}

const Command& consultCommand() {
  static const Command command{
      "consult", toSay("show what a full key holds"),
      toSay("Usage: velmora consult --db PATH --key FULLKEY [--kind AUTRE|SSIAD] [--date DATE]\n"
            "                       [--json]\n"
            "  Runs the control on an intervention key (26 characters, with FLOT behind for\n"
            "  floating templates), a template key followed by SEMTYPE, or a floating template\n"
            "  key followed by SEMTYPEFLOT, and prints what the planner would see.\n"
            "  --date  the day of the intervention, which limits the client's task lists; by\n"
            "          default the date that the key names\n"
            "  --json  print a JSON object instead\n"),
      &consult};
  return command;
}

}  // namespace velmora::cli
