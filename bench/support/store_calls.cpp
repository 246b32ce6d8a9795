#include "support/store_calls.h"

#include <map>

#include <velmora/base/failure.h>

namespace velmora::bench {

namespace {

class RecordingFile final : public NorvikFile {
 public:
  RecordingFile(FileRef inner, std::shared_ptr<StoreCalls> calls)
      : inner_(std::move(inner)), calls_(std::move(calls)) {}

  RecordRef ReadRecord(const Text& Cle) override {
    calls_->push_back({StoreCall::Kind::Read, inner_->name(), Cle});
    return inner_->ReadRecord(Cle);
  }
  const Text& name() const override { return inner_->name(); }

 private:
  FileRef inner_;
  std::shared_ptr<StoreCalls> calls_;
};

class RecordingDatabase final : public NorvikDatabase {
 public:
  RecordingDatabase(DatabaseRef inner, std::shared_ptr<StoreCalls> calls)
      : inner_(std::move(inner)), calls_(std::move(calls)) {}

  FileRef OpenFile(const Text& Nom) override {
    calls_->push_back({StoreCall::Kind::Open, Nom, {}});
    return FileRef(std::make_shared<RecordingFile>(inner_->OpenFile(Nom), calls_));
  }
  RecordRef RunQuery(const Text& Requete, const Text& Options, long& Nombre) override {
    calls_->push_back({StoreCall::Kind::Query, {}, Requete});
    return inner_->RunQuery(Requete, Options, Nombre);
  }
  // The control's snapshots reach the store as they would without the recording.
  std::unique_ptr<Snapshot> holdSnapshot() override { return inner_->holdSnapshot(); }

 private:
  DatabaseRef inner_;
  std::shared_ptr<StoreCalls> calls_;
};

}  // namespace

DatabaseRef recordingDatabase(DatabaseRef inner, std::shared_ptr<StoreCalls> calls) {
  return DatabaseRef(std::make_shared<RecordingDatabase>(std::move(inner), std::move(calls)));
}

void replay(const StoreCalls& calls, const DatabaseRef& database) {
  std::map<Text, FileRef> files;
  long count = 0;
  for (const StoreCall& call : calls) {
    switch (call.kind) {
      case StoreCall::Kind::Open:
        files[call.file] = database->OpenFile(call.file);
        break;
      case StoreCall::Kind::Read: {
        FileRef& file = files[call.file];
        if (!file) file = database->OpenFile(call.file);
        try {
          const RecordRef record = file->ReadRecord(call.text);
          (void)record;
        } catch (const Failure& failure) {
          if (failure.number() != errors::kRecordNotFound) throw;
        }
        break;
      }
      case StoreCall::Kind::Query: {
        const RecordRef answer = database->RunQuery(call.text, u"", count);
        (void)answer;
        break;
      }
    }
  }
}

CallCounts count(const StoreCalls& calls) {
  CallCounts counts;
  for (const StoreCall& call : calls) {
    switch (call.kind) {
      case StoreCall::Kind::Open:
        ++counts.opens;
        break;
      case StoreCall::Kind::Read:
        ++counts.reads;
        break;
      case StoreCall::Kind::Query:
        ++counts.queries;
        break;
    }
  }
  return counts;
}

}  // namespace velmora::bench
