// velmora propose and velmora consult: the control without a screen. Each creates the
// control on a read-only connection, calls Init as a host would and prints what the
// planner would see.
#include <array>
#include <chrono>
#include <iostream>
#include <memory>

#include <velmora/base/failure.h>
#include <velmora/control/ctr_velmora_new.h>
#include <velmora/store/dates.h>
#include <velmora/store/sqlite_database.h>
#include <velmora/toolkit/services.h>
#include "command.h"
#include "control/module_slots.h"
#include "report.h"

namespace velmora::cli {

namespace {

Text kindOf(Arguments& args) {
  const std::string kind = args.option("kind").value_or("AUTRE");
  if (kind != "AUTRE" && kind != "SSIAD") {
    throw UsageError("--kind is AUTRE or SSIAD, not \"" + kind + "\"");
  }
  return fromUtf8(kind);
}

// A date as the planner writes it; checked here so that a mistake is named, not
// silently turned into an empty search.
Text dateOption(Arguments& args, const char* name, const Text& fallback) {
  const auto given = args.option(name);
  if (!given) return fallback;
  Text date = fromUtf8(*given);
  try {
    NorvikDates().TexteVersDate(date);
  } catch (const Failure& failure) {
    throw UsageError(std::string("--") + name + ": " + failure.what());
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
    throw UsageError("--days is a mask of up to 7 digits 0 or 1, lundi first, not \"" + *given +
                     "\"");
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
    throw UsageError("--time is FROM-TO, as 08:30-10:00 or 8.5-10, not \"" + *given + "\"");
  }
  from = fromUtf8(given->substr(0, dash));
  to = fromUtf8(given->substr(dash + 1));
}

// A client is known when the host's client file has its record, or when a task list or
// a template of either kind names it (an account may hold no client file at all).
bool clientKnown(const DatabaseRef& db, const Text& client) {
  try {
    db->OpenFile(u"BESOINSAIDE")->ReadRecord(client);
    return true;
  } catch (const Failure& failure) {
    if (failure.number() != errors::kRecordNotFound && failure.number() != errors::kUnknownFile) {
      throw;
    }
  }
  const Text q = u"\"";
  const std::array<std::pair<Text, Text>, 3> probes{{
      {u"SSELECT AIDEDETAILTACHE AVEC @ID = " + q + client + u"]" + q, u"AIDEDETAILTACHE"},
      {u"SSELECT TPSSEMAINETYPE AVEC CodeAideSemType = " + q + client + q, u"TPSSEMAINETYPE"},
      {u"SSELECT TPSSEMAINETYPEFLOT AVEC CodeAideFlot = " + q + client + q, u"TPSSEMAINETYPEFLOT"},
  }};
  for (const auto& [query, file] : probes) {
    NorvikRecord request;
    request.set(1, query);
    request.set(2, file);
    request.set(3, u"0");
    long count = 0;
    if (db->RunQuery(request.r(), u"", count)->DCount() > 0) return true;
  }
  return false;
}

// Creates the control as a host does, runs Init and prints the result.
int showControl(const DatabaseRef& db, InitArguments& init, bool json) {
  Variable::resetAll();
  Ctr_VelmoraNew control;
  control.setServices(std::make_shared<toolkit::ScriptedServices>());
  control.TheDatabase(db);
  control.Init(init);
  if (json) {
    std::cout << reportJson(control).dump(2) << "\n";
  } else {
    printReport(std::cout, control);
  }
  Variable::resetAll();
  return 0;
}

int propose(Arguments& args) {
  const std::string path = requiredDatabase(args);
  const Text kind = kindOf(args);
  const auto client = args.option("client");
  if (!client) throw UsageError("--client CODE is required");
  const Text code = fromUtf8(*client);
  if (code.size() != 5)
    throw UsageError("--client is a code of 5 characters, not \"" + *client + "\"");
  const Text from = dateOption(args, "from", today());
  const Text to = dateOption(args, "to", u"");
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
        "unknown client \"" + *client + "\": no client record, task list or template names it");
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

int consult(Arguments& args) {
  const std::string path = requiredDatabase(args);
  const Text kind = kindOf(args);
  const auto key = args.option("key");
  if (!key || key->empty()) throw UsageError("--key FULLKEY is required");
  const Text code = fromUtf8(*key);
  if (code.size() == 5 || (code.size() == 9 && instr(code, u"FLOT") > 0)) {
    throw UsageError("--key is a full key; for a client code use velmora propose");
  }
  const Text date = dateOption(args, "date", keyDate(code));
  const bool json = args.flag("json");
  args.positionals(0, 0);
  const DatabaseRef db = openDatabase(path);
  InitArguments init{kind, code, date, u"", u"", u"", u""};
  return showControl(db, init, json);
}

}  // namespace

const Command& proposeCommand() {
  static const Command command{
      "propose", "show what the control proposes for a client",
      "usage: velmora propose --db PATH --client CODE [--kind AUTRE|SSIAD] [--from DATE]\n"
      "                       [--to DATE] [--time FROM-TO] [--days MASK] [--floating] [--json]\n"
      "  Runs the control on the store as a host would for a bare client code and prints\n"
      "  what the planner would see: the column captions, the rows of both lists between\n"
      "  \"|\" with the code behind each row, the observations, the total and the\n"
      "  mandatory indicator.\n"
      "  --kind      AUTRE (home help, the default) or SSIAD (care acts)\n"
      "  --from      first day, dd/mm/yyyy or yyyy-mm-dd; today by default\n"
      "  --to        last day; none by default\n"
      "  --time      the time slot as the store's parameter wants it: 08:30-10:00, or\n"
      "              8.5-10 in decimal hours; the whole day by default\n"
      "  --days      weekday mask, lundi first: 1000000 is lundi; by default the weekday\n"
      "              of --from\n"
      "  --floating  search the floating templates only\n"
      "  --json      print a JSON object instead\n"
      "  A client that no client record (BESOINSAIDE), task list or template names is an\n"
      "  error.\n",
      &propose};
  return command;
}

const Command& consultCommand() {
  static const Command command{
      "consult", "show what a full key holds",
      "usage: velmora consult --db PATH --key FULLKEY [--kind AUTRE|SSIAD] [--date DATE]\n"
      "                       [--json]\n"
      "  Runs the control on an intervention key (26 characters, with FLOT behind for\n"
      "  floating templates), a template key followed by SEMTYPE, or a floating template\n"
      "  key followed by SEMTYPEFLOT, and prints what the planner would see.\n"
      "  --date  the day of the intervention, which limits the client's task lists; by\n"
      "          default the date that the key names\n"
      "  --json  print a JSON object instead\n",
      &consult};
  return command;
}

}  // namespace velmora::cli
