// The query language of the store: SSELECT/SELECT with AVEC conditions and PAR sorts.
#pragma once

#include <velmora/base/text.h>
#include <velmora/store/record.h>
#include "store/engine/read_connection.h"

namespace velmora::store {

// Runs a request record's text (attribute 1 the query, 2 the file, 3 the columns) and
// gives the answer: one attribute per hit, one value per column.
NorvikRecord runRequest(ReadConnection& connection, const Text& request);

}  // namespace velmora::store
