// The record store as its readers see it: a database of named files of keyed records,
// and queries that answer with one attribute per hit.
#pragma once

#include <memory>

#include <velmora/export.h>

#include <velmora/base/text.h>
#include <velmora/store/record.h>
#include <velmora/store/ref.h>

namespace velmora {

class VELMORA_EXPORT NorvikFile {
 public:
  virtual ~NorvikFile() = default;
  // A new record with the content stored under the key; fails with
  // errors::kRecordNotFound when the key has no record.
  virtual RecordRef ReadRecord(const Text& Cle) = 0;
  virtual const Text& name() const = 0;
};

using FileRef = Ref<NorvikFile>;

class VELMORA_EXPORT NorvikDatabase {
 public:
  virtual ~NorvikDatabase() = default;
  // The file of that name; an unknown name fails with errors::kUnknownFile.
  virtual FileRef OpenFile(const Text& Nom) = 0;
  // Requete is the whole text of a request record: attribute 1 the query, 2 the file,
  // 3 the columns. The answer has one attribute per hit in query order and one value
  // per column; "" when nothing was selected. Options and Nombre are not used.
  virtual RecordRef RunQuery(const Text& Requete, const Text& Options, long& Nombre) = 0;

  // While the returned guard lives, every read of this database and of its files sees one
  // state of the store, taken under one lock with one bounded wait; holds taken inside it
  // share it. A store without transactions gives an empty guard.
  class VELMORA_EXPORT Snapshot {
   public:
    virtual ~Snapshot() = default;
  };
  virtual std::unique_ptr<Snapshot> holdSnapshot() { return {}; }
};

using DatabaseRef = Ref<NorvikDatabase>;

// The control keeps a reference to the client object and calls nothing on it.
class VELMORA_EXPORT NorvikClient {
 public:
  virtual ~NorvikClient() = default;
};

using ClientRef = Ref<NorvikClient>;

namespace store {

// A value written as a literal of the query language ('...', a quote in it doubled): it
// compares whole, and no character of it can change the shape of the query it stands in.
// Hosts that put a value of their own into a query write it with this.
VELMORA_EXPORT Text literalValue(TextView value);

}  // namespace store

}  // namespace velmora
