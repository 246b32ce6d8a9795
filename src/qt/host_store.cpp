// The demo host's record of a planned intervention: the detail key, the four-digit time
// and the record holding the selection's codes, durations and observations. It writes
// through a connection of its own, in one transaction, never through the control's.
#include <velmora/qt/host_store.h>

#include <velmora/base/failure.h>
#include <velmora/store/dates.h>
#include <velmora/store/writer.h>

namespace velmora::qt {

namespace {

int twoDigits(TextView text, std::size_t at) {
  if (text.size() < at + 2) throw Failure(errors::kTypeMismatch, "pas une heure : " + toUtf8(text));
  const char16_t a = text[at];
  const char16_t b = text[at + 1];
  if (a < u'0' || a > u'9' || b < u'0' || b > u'9') {
    throw Failure(errors::kTypeMismatch, "pas une heure : " + toUtf8(text));
  }
  return (a - u'0') * 10 + (b - u'0');
}

Text twoDigitText(int n) {
  return Text{char16_t(u'0' + n / 10), char16_t(u'0' + n % 10)};
}

Text internalDate(const Text& date) {
  return NorvikDates().TexteVersDate(date);
}

}  // namespace

Text fourDigitTime(TextView hhmm) {
  if (hhmm.size() != 5 || hhmm[2] != u':') {
    throw Failure(errors::kTypeMismatch, "pas une heure HH:MM : " + toUtf8(hhmm));
  }
  const int hours = twoDigits(hhmm, 0);
  const int minutes = twoDigits(hhmm, 3);
  if (hours > 23 || minutes > 59)
    throw Failure(errors::kTypeMismatch, "pas une heure : " + toUtf8(hhmm));
  // Hundredths of an hour, rounded to the nearest.
  const int hundredths = (minutes * 100 + 30) / 60;
  return twoDigitText(hours) + twoDigitText(hundredths);
}

Text detailKey(const Intervention& i) {
  if (i.agency.size() != 5 || i.client.size() != 5) {
    throw Failure(errors::kInvalidCall, "l'agence et le client ont 5 caractères chacun");
  }
  const Text date = internalDate(i.dateDeb);
  const auto days = static_cast<long>(parseNumber(date).value_or(0));
  // Day 0 of the store, 31/12/1967, was a Sunday: Monday is 0 in the key.
  const auto weekday = static_cast<char16_t>(u'0' + (days + 6) % 7);
  return i.agency + i.client + date + u"000001" + Text(1, weekday) + fourDigitTime(i.heureDe);
}

NorvikRecord interventionRecord(const Intervention& i, const NorvikRecord& items) {
  std::vector<Text> codes;
  std::vector<Text> durations;
  std::vector<Text> observations;
  for (int n = 1; n <= items.DCount(); ++n) {
    codes.push_back(items.r(n, 1));
    durations.push_back(items.r(n, 2));
    observations.push_back(items.r(n, 3));
  }
  NorvikRecord record;
  record.appendAttribute({internalDate(i.dateFin)});
  record.appendAttribute({fourDigitTime(i.heureA)});
  record.appendAttribute({i.kind == u"SSIAD" ? Text(u"S") : Text(u"A")});
  for (int unused = 4; unused <= 6; ++unused) record.appendAttribute({Text()});
  record.appendAttribute(std::move(codes));
  record.appendAttribute(std::move(durations));
  record.appendAttribute(std::move(observations));
  return record;
}

Text storeSelection(const std::string& databasePath, const Intervention& intervention,
                    const NorvikRecord& items) {
  Text key = detailKey(intervention);
  Batch batch;
  batch.putRecord(u"TPSDETAILSINTERV", key, interventionRecord(intervention, items));
  StoreWriter(databasePath).apply(batch);
  return key;
}

}  // namespace velmora::qt
