// The language of the tool's messages, chosen once at start.
#pragma once

namespace velmora::cli {

// Takes the messages locale from the environment (LC_ALL, LC_MESSAGES, LANG, as gettext
// decides) and only that category, and binds the catalogue installed beside the program.
void speakTheUsersLanguage();

}  // namespace velmora::cli
