// What the control asks of the screen: the question box, the modal show of a form and
// the mouse pointer. The Qt binding runs the real QMessageBox and QDialog; tests and
// scripts answer through ScriptedServices.
//
// Ownership: a control shares its services with the host (setServices); they are called
// on the thread that runs the control, one call at a time.
#pragma once

#include <velmora/export.h>

#include <deque>
#include <functional>
#include <vector>

#include <velmora/toolkit/form.h>

namespace velmora::toolkit {

inline constexpr int kMsgBoxYes = 6;
inline constexpr int kMsgBoxNo = 7;
inline constexpr int kStyleYesNoQuestion = 36;  // 4 (Yes, No) + 32 (question icon)

class VELMORA_EXPORT Services {
 public:
  virtual ~Services() = default;
  // Shows the prompt and returns the code of the button chosen (6 Yes, 7 No).
  virtual int MsgBox(TextView prompt, int style, TextView title) = 0;
  // Shows a loaded form modally; returns when the form has been unloaded.
  virtual void ShowModal(Form& form) = 0;
  virtual void setMousePointer(int shape) = 0;
};

// Answers from a script: each question takes the next answer, each modal show runs
// the next action on the form (which should end by pressing one of its buttons). A
// question or a show with nothing scripted, or an action that leaves the form open,
// fails with errors::kInvalidCall.
class VELMORA_EXPORT ScriptedServices : public Services {
 public:
  struct Question {
    Text prompt;
    int style = 0;
    Text title;
  };

  void answer(int code) { answers_.push_back(code); }
  void onModal(std::function<void(Form&)> action) { modalActions_.push_back(std::move(action)); }

  int MsgBox(TextView prompt, int style, TextView title) override;
  void ShowModal(Form& form) override;
  void setMousePointer(int shape) override { mousePointer_ = shape; }

  const std::vector<Question>& questions() const { return questions_; }
  int modalShows() const { return modalShows_; }
  int mousePointer() const { return mousePointer_; }
  bool hasPendingAnswers() const { return !answers_.empty() || !modalActions_.empty(); }

 private:
  std::deque<int> answers_;
  std::deque<std::function<void(Form&)>> modalActions_;
  std::vector<Question> questions_;
  int modalShows_ = 0;
  int mousePointer_ = -1;
};

}  // namespace velmora::toolkit
