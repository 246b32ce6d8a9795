// The exchange format of a store: JSON Lines, one declaration, dictionary item or record
// per line, for samples, imports and exports.
#pragma once

#include <velmora/export.h>

#include <istream>
#include <ostream>
#include <string>

#include <velmora/store/writer.h>

namespace velmora {

// Reads the whole stream into a batch; nothing is written anywhere. A malformed or
// truncated line fails with errors::kBadImport and "<sourceName>:<line>: <what is wrong>".
VELMORA_EXPORT Batch readExchange(std::istream& in, const std::string& sourceName);

// Writes the store in that file (or at that server URI): declarations, dictionary, then
// records by file and key, all in code unit order, so that an export of an import of an
// export is the same bytes. Reads through a read-only connection of its own, in one
// snapshot; fails as openDatabase does, or with errors::kDatabase when out cannot be
// written. What was written to out before a failure stays there.
VELMORA_EXPORT void writeExchange(const std::string& databasePath, std::ostream& out);

}  // namespace velmora
