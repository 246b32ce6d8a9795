// The scripted screen services: questions and dialogs answered in advance, for the tests
// and tools that drive the control without a screen. An unscripted one fails loudly.
#include <velmora/toolkit/services.h>

namespace velmora::toolkit {

int ScriptedServices::MsgBox(TextView prompt, int style, TextView title) {
  questions_.push_back({Text(prompt), style, Text(title)});
  if (answers_.empty()) {
    throw Failure(errors::kInvalidCall,
                  "no answer was scripted for the question \"" + toUtf8(prompt) + "\"");
  }
  const int code = answers_.front();
  answers_.pop_front();
  return code;
}

void ScriptedServices::ShowModal(Form& form) {
  ++modalShows_;
  if (modalActions_.empty()) {
    throw Failure(errors::kInvalidCall,
                  "no action was scripted for the dialog \"" + toUtf8(form.Caption()) + "\"");
  }
  auto action = std::move(modalActions_.front());
  modalActions_.pop_front();
  action(form);
  if (form.isLoaded()) {
    throw Failure(errors::kInvalidCall,
                  "the scripted action left the dialog \"" + toUtf8(form.Caption()) + "\" open");
  }
}

}  // namespace velmora::toolkit
