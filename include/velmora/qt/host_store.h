// How a host (the demo) may keep a selection: as a planned intervention of its own, a
// TPSDETAILSINTERV record whose attributes 7, 8 and 9 hold the codes, durations and
// observations, written through the host's own writable connection.
#pragma once

#include <velmora/export.h>

#include <string>

#include <velmora/base/text.h>
#include <velmora/store/record.h>

namespace velmora::qt {

struct VELMORA_EXPORT Intervention {
  Text agency = u"DEMO0";  // 5 characters
  Text client;             // 5 characters
  Text dateDeb;            // dd/mm/yyyy
  Text dateFin;            // dd/mm/yyyy
  Text heureDe;            // HH:MM
  Text heureA;             // HH:MM
  Text kind;               // "AUTRE" or "SSIAD"
};

// "08:30" to "0850": two digits of hours, two of hundredths of an hour.
VELMORA_EXPORT Text fourDigitTime(TextView hhmm);

// The detail key: agency, client, internal date, a number of six digits, the weekday
// (0 Monday) and the four-digit start time, 26 characters in all.
VELMORA_EXPORT Text detailKey(const Intervention& intervention);

// The record of a stored intervention: end date and time, the nature ("A" home help,
// "S" care), then the items of the selection in attributes 7, 8 and 9.
VELMORA_EXPORT NorvikRecord interventionRecord(const Intervention& intervention,
                                               const NorvikRecord& items);

// Writes the record under its key in one transaction; returns the key.
VELMORA_EXPORT Text storeSelection(const std::string& databasePath,
                                   const Intervention& intervention, const NorvikRecord& items);

}  // namespace velmora::qt
