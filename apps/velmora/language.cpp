// Binds the tool's message catalogue: French under a French messages locale, English
// otherwise. Only LC_MESSAGES follows the environment, so that numbers and texts convert
// alike in every locale.
#include "language.h"

#include <libintl.h>

#include <clocale>
#include <filesystem>
#include <system_error>

#include "base/message.h"

namespace velmora::cli {

namespace {

namespace fs = std::filesystem;

// share/locale beside the program's own folder: <prefix>/bin/../share/locale once
// installed (anywhere: a relocated prefix too), <build>/apps/../share/locale in the build
// tree, where the build puts the compiled catalogue.
fs::path catalogueFolder() {
  std::error_code ec;
  const fs::path program = fs::canonical("/proc/self/exe", ec);
  if (ec) return {};
  const fs::path folder = program.parent_path().parent_path() / "share" / "locale";
  return fs::is_directory(folder, ec) ? folder : fs::path();
}

}  // namespace

void speakTheUsersLanguage() {
  std::setlocale(LC_MESSAGES, "");
  if (const fs::path folder = catalogueFolder(); !folder.empty()) {
    bindtextdomain(kMessageDomain, folder.c_str());
  }
  // The catalogue's text as it is written, whatever LC_CTYPE says (it stays "C").
  bind_textdomain_codeset(kMessageDomain, "UTF-8");
}

}  // namespace velmora::cli
