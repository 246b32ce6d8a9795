// What the two template searches share before they walk the keys: the search start and
// end as four-digit times, and the query on one template file. The store filters on
// client, period, presence of items and kind of activity; weekday and time of day are
// tested by the walks.
#pragma once

#include <velmora/base/text.h>

namespace velmora::search {

// The literals that differ between the fixed and the floating template file.
struct TemplateFile {
  TextView name;
  TextView head;
  TextView startDateTest;
  TextView activityCare;
  TextView activityOther;
};

extern const TemplateFile kFixedTemplates;     // TPSSEMAINETYPE
extern const TemplateFile kFloatingTemplates;  // TPSSEMAINETYPEFLOT

// The criteria of a search, as Init left them in the control.
struct SearchCriteria {
  const Text& code;
  const Text& dateDeb;
  const Text& dateFin;
  const Text& typeAct;
  const Text& heureDe;
  const Text& heureA;
  const Text& jour;

  // A search runs only when every criterion but the end date is given.
  bool complete() const {
    return !code.empty() && !dateDeb.empty() && !heureDe.empty() && !heureA.empty() &&
           !typeAct.empty() && !jour.empty();
  }
};

// The whole text of the request record, assembled clause by clause under continue on
// error: a date that TexteVersDate refuses drops the clause that needs it (with an end
// date, the start-date test and the end-of-validity test are one clause).
Text templateRequest(const TemplateFile& file, const SearchCriteria& criteria);

struct SearchTimes {
  Text start;
  Text end;
};

// Keys decoded by Init carry four-digit times already. Otherwise attribute 20 of the
// parameter record says "1" for decimal hours, anything else (or no record) HH:MM. A time
// that cannot be converted leaves its value empty.
SearchTimes searchTimes(bool cleLue, const SearchCriteria& criteria);

}  // namespace velmora::search
