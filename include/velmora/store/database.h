// The record store as its readers see it: a database of named files of keyed records,
// and queries that answer with one attribute per hit.
#pragma once

#include <memory>

#include <velmora/export.h>

#include <velmora/base/text.h>
#include <velmora/store/record.h>
#include <velmora/store/ref.h>

namespace velmora {

// One named file of a database: records under text keys. A file holds a share of its
// database's connection, so it stays usable after the database object is released; the
// connection closes when the last database and file holding it go. It is used by one
// thread at a time, that of its connection (see NorvikDatabase).
class VELMORA_EXPORT NorvikFile {
 public:
  virtual ~NorvikFile() = default;
  // Reads the record stored under the key, as one new record the caller owns alone:
  // changing it changes nothing stored. Fails with errors::kRecordNotFound when the key
  // has no record, errors::kBusy when a writer keeps the lock too long, errors::kDatabase
  // when the store cannot be read.
  virtual RecordRef ReadRecord(const Text& Cle) = 0;
  // The name the file was opened by.
  virtual const Text& name() const = 0;
};

using FileRef = Ref<NorvikFile>;

// A read-only connection to a record store, as the control sees it: it opens files and
// runs queries, and never writes. Threads: a database, its files and the records they
// give hold no lock; one thread at a time uses a connection and what came from it (the
// query engine keeps its caches per thread). Two threads read side by side through two
// connections. Ownership: DatabaseRef counts its holders; the connection is released
// when the last database reference and the last file opened from it go.
class VELMORA_EXPORT NorvikDatabase {
 public:
  virtual ~NorvikDatabase() = default;
  // The file of that name, sharing this connection. Fails with errors::kUnknownFile
  // (an English message for the host's developer, naming the file and the database)
  // when the store has no such file.
  virtual FileRef OpenFile(const Text& Nom) = 0;
  // Requete is the whole text of a request record: attribute 1 the query, 2 the file,
  // 3 the columns. The answer has one attribute per hit in query order and one value
  // per column; "" when nothing was selected. Nombre receives the number of hits (the
  // answer's DCount()); Options is not used. Fails, in French, with errors::kBadQuery
  // (malformed query or columns, or a file that differs from the query's),
  // errors::kUnknownFile, errors::kUnknownName (a dictionary name the file lacks),
  // errors::kBusy or errors::kDatabase.
  virtual RecordRef RunQuery(const Text& Requete, const Text& Options, long& Nombre) = 0;

  // While the returned guard lives, every read of this database and of its files sees one
  // state of the store, taken under one lock with one bounded wait; holds taken inside it
  // share it. A store without transactions gives an empty guard. The guard must go before
  // the database it came from is used by another thread.
  class VELMORA_EXPORT Snapshot {
   public:
    virtual ~Snapshot() = default;
  };
  virtual std::unique_ptr<Snapshot> holdSnapshot() { return {}; }
};

using DatabaseRef = Ref<NorvikDatabase>;

// The host's client object: the control keeps a reference to it and calls nothing on it.
class VELMORA_EXPORT NorvikClient {
 public:
  virtual ~NorvikClient() = default;
};

using ClientRef = Ref<NorvikClient>;

// A value written as a literal of the query language ('...', a quote in it doubled): it
// compares whole, and no character of it can change the shape of the query it stands in.
// Hosts that put a value of their own into a query write it with this.
VELMORA_EXPORT Text literalValue(TextView value);

}  // namespace velmora
