// The layout of a new account: its thirteen files and the six dictionary names of the
// templates, as one batch. The sample and the test accounts are built from it.
#include "store/engine/account_layout.h"

namespace velmora {

namespace {

DictionaryItem keyPart(const char16_t* file, const char16_t* name, int start, int length) {
  return DictionaryItem{file, name, -1, start, length};
}

DictionaryItem attribute(const char16_t* file, const char16_t* name, int number) {
  return DictionaryItem{file, name, number, 0, 0};
}

}  // namespace

Batch standardLayout() {
  Batch batch;
  for (const char16_t* file : kAccountFiles) batch.createFile(file);
  batch.defineItem(keyPart(u"TPSSEMAINETYPE", u"CodeAideSemType", 1, 5));
  batch.defineItem(keyPart(u"TPSSEMAINETYPE", u"DateDebSemType", 6, 5));
  batch.defineItem(attribute(u"TPSSEMAINETYPE", u"TypeActSemType", 3));
  batch.defineItem(keyPart(u"TPSSEMAINETYPEFLOT", u"CodeAideFlot", 1, 5));
  batch.defineItem(keyPart(u"TPSSEMAINETYPEFLOT", u"DateDebFlot", 6, 5));
  batch.defineItem(attribute(u"TPSSEMAINETYPEFLOT", u"TypeActFlot", 3));
  return batch;
}

}  // namespace velmora
