// The writing side of a backend: a batch applied in one transaction, all or nothing.
#pragma once

#include <memory>
#include <string>

#include <velmora/store/writer.h>

namespace velmora::store {

class BatchTarget {
 public:
  virtual ~BatchTarget() = default;
  virtual void apply(const Batch& batch) = 0;
};

// The SQLite file at path, created when absent.
std::unique_ptr<BatchTarget> sqliteTarget(const std::string& path, StoreWriter::Sync sync);
// The server database a URI names; its tables are created in an empty one.
std::unique_ptr<BatchTarget> serverTarget(const std::string& uri, StoreWriter::Sync sync);

}  // namespace velmora::store
