// What the planner would see of the control, printed for people or for programs: the
// column captions, both lists row by row as stored with the codes behind them, the
// observations, the total and the indicators. Shared by the commands that drive the
// control without a screen.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include <velmora/control/ctr_velmora_new.h>

namespace velmora::cli {

// Rows stand between "|" characters, exactly as stored, so that their fixed widths and
// trailing blanks show.
void printReport(std::ostream& out, const Ctr_VelmoraNew& control);

// "1 row", "2 rows": a count in the catalogue's pattern for one or for more (marked with
// toSay so that they are translated).
std::string counted(std::size_t n, const char* one, const char* many);

nlohmann::ordered_json reportJson(const Ctr_VelmoraNew& control);

}  // namespace velmora::cli
