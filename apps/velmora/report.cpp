#include "report.h"
#include "control/inspection.h"

#include <algorithm>
#include <string>

#include "base/message.h"

namespace velmora::cli {

namespace {

using Json = nlohmann::ordered_json;

std::string inQuotes(TextView t) {
  // Built by appending: GCC 12 at -O3 warns falsely (-Wrestrict) on "\"" + string.
  std::string out(1, '"');
  out += toUtf8(t);
  out += '"';
  return out;
}

std::vector<std::string> rowsOf(const toolkit::ListBox& list) {
  std::vector<std::string> out;
  out.reserve(static_cast<std::size_t>(list.ListCount()));
  for (int i = 0; i < list.ListCount(); ++i) out.push_back(toUtf8(list.List(i)));
  return out;
}

// The observation of each selected row: attribute n + 1 of R_Obs for row n.
std::vector<std::string> observations(const Ctr_VelmoraNew& control, int rows) {
  std::vector<std::string> out;
  out.reserve(static_cast<std::size_t>(std::max(rows, 0)));
  const RecordRef& obs = CtrInspector(control).Variable().R_Obs;
  for (int i = 0; i < rows; ++i) out.push_back(obs.empty() ? "" : toUtf8(obs->r(i + 1)));
  return out;
}

// Observations may run over several lines; a report line must stay one line.
std::string oneLine(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else {
      out.push_back(c);
    }
  }
  return out;
}

// One line per row: its number, the row between bars, then the code beside it. Lists
// of unequal length show the missing side as "(none)".
void printList(std::ostream& out, const char* rowsName, const std::vector<std::string>& rows,
               const char* codesName, const std::vector<std::string>& codes,
               const std::vector<std::string>* obs) {
  out << rowsName << " (" << counted(rows.size(), toSay("1 row"), toSay("{} rows")) << "), "
      << codesName << " (" << counted(codes.size(), toSay("1 code"), toSay("{} codes")) << "):\n";
  const std::size_t n = std::max(rows.size(), codes.size());
  const std::size_t width = std::to_string(n).size();
  for (std::size_t i = 0; i < n; ++i) {
    const std::string number = std::to_string(i);
    out << "  " << std::string(width - number.size(), ' ') << number << " ";
    out << (i < rows.size() ? "|" + rows[i] + "|" : say("(none)"));
    out << "  " << (i < codes.size() ? codes[i] : say("(none)"));
    if (obs != nullptr && i < obs->size() && !(*obs)[i].empty())
      out << "  obs \"" << oneLine((*obs)[i]) << "\"";
    out << "\n";
  }
}

const char* yesNo(bool b) {
  return b ? "True" : "False";
}

}  // namespace

std::string counted(std::size_t n, const char* one, const char* many) {
  return n == 1 ? say(one) : say(many, {std::to_string(n)});
}

void printReport(std::ostream& out, const Ctr_VelmoraNew& c) {
  out << "Etq_Pos1 " << inQuotes(c.Etq_Pos1.Caption()) << "  Etq_Pos2 "
      << inQuotes(c.Etq_Pos2.Caption()) << "  Etq_Pos3 " << inQuotes(c.Etq_Pos3.Caption()) << "\n";
  out << "Etq_Sel1 " << inQuotes(c.Etq_Sel1.Caption()) << "  Etq_Sel2 "
      << inQuotes(c.Etq_Sel2.Caption()) << "  Etq_Sel3 " << inQuotes(c.Etq_Sel3.Caption()) << "\n";
  out << "Cac_TouteTache " << inQuotes(c.Cac_TouteTache.Caption()) << " "
      << say("value {}", {std::to_string(c.Cac_TouteTache.Value())})
      << (c.Cac_TouteTache.Enabled() ? "" : " " + say("(disabled)")) << "\n";
  out << "\n";
  printList(out, "Lst_Possible", rowsOf(c.Lst_Possible), "Lst_CodePos", rowsOf(c.Lst_CodePos),
            nullptr);
  out << "\n";
  const auto selected = rowsOf(c.Lst_Selectionne);
  const auto obs = observations(c, static_cast<int>(selected.size()));
  printList(out, "Lst_Selectionne", selected, "Lst_CodeSelect", rowsOf(c.Lst_CodeSelect), &obs);
  out << "\n";
  out << "Txt_Duree " << inQuotes(c.Txt_Duree.getText()) << "\n";
  out << "W_Total " << toUtf8(c.W_Total.toText()) << "\n";
  out << "W_AfficheTache " << yesNo(c.W_AfficheTache != kFalse) << "\n";
  out << "Etq_Imperativite " << (c.Etq_Imperativite.Visible() ? say("shown") : say("hidden"))
      << "\n";
}

Json reportJson(const Ctr_VelmoraNew& c) {
  Json captions = Json::object();
  for (const toolkit::Label* label :
       {&c.Etq_Pos1, &c.Etq_Pos2, &c.Etq_Pos3, &c.Etq_Sel1, &c.Etq_Sel2, &c.Etq_Sel3}) {
    captions[label->name()] = toUtf8(label->Caption());
  }
  captions["Cac_TouteTache"] = toUtf8(c.Cac_TouteTache.Caption());
  const auto selected = rowsOf(c.Lst_Selectionne);
  Json out = Json::object();
  out["captions"] = captions;
  out["Cac_TouteTache"] = {{"value", c.Cac_TouteTache.Value()},
                           {"enabled", c.Cac_TouteTache.Enabled()}};
  out["Lst_Possible"] = rowsOf(c.Lst_Possible);
  out["Lst_CodePos"] = rowsOf(c.Lst_CodePos);
  out["Lst_Selectionne"] = selected;
  out["Lst_CodeSelect"] = rowsOf(c.Lst_CodeSelect);
  out["R_Obs"] = observations(c, static_cast<int>(selected.size()));
  out["Txt_Duree"] = toUtf8(c.Txt_Duree.getText());
  // Whole minutes as an integer, a fraction as a decimal number.
  if (c.W_Total.units() % 10000 == 0) {
    out["W_Total"] = c.W_Total.units() / 10000;
  } else {
    out["W_Total"] = c.W_Total.toDouble();
  }
  out["W_AfficheTache"] = c.W_AfficheTache != kFalse;
  out["Etq_Imperativite"] = c.Etq_Imperativite.Visible();
  return out;
}

}  // namespace velmora::cli
