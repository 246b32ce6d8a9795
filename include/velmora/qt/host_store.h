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

// Every function here is a pure computation but storeSelection, which writes through a
// connection of its own, opened and closed inside the call: never the control's, which
// only reads. Any thread.

// "08:30" to "0850": two digits of hours, two of hundredths of an hour, rounded to the
// nearest. Fails with errors::kTypeMismatch on anything but a time HH:MM of one day.
VELMORA_EXPORT Text fourDigitTime(TextView hhmm);

// The detail key: agency, client, internal date, a number of six digits, the weekday
// (0 Monday) and the four-digit start time, 26 characters in all. Fails with
// errors::kInvalidCall unless agency and client have 5 characters each, and as
// fourDigitTime on a bad start time.
VELMORA_EXPORT Text detailKey(const Intervention& intervention);

// The record of a stored intervention: end date and time, the nature ("A" home help,
// "S" care), then the items of the selection in attributes 7, 8 and 9 (attributes 4 to 6
// empty). items is a selection as the control's W_Enr holds it: per value, code, duration
// and observation.
VELMORA_EXPORT NorvikRecord interventionRecord(const Intervention& intervention,
                                               const NorvikRecord& items);

// Writes the record under its key into the store at databasePath, in one transaction,
// replacing a record of the same key; returns the key. Fails as detailKey does, or with
// the store's failure when the store cannot be opened or written; nothing is written then.
VELMORA_EXPORT Text storeSelection(const std::string& databasePath,
                                   const Intervention& intervention, const NorvikRecord& items);

}  // namespace velmora::qt
