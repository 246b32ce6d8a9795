// A modal QDialog over a toolkit form: the form's children as views at their places,
// the form's caption and look, and closing only when the form agrees to unload.
#pragma once

#include <memory>

#include <QDialog>

#include <velmora/toolkit/form.h>

namespace velmora::qt {

class FormDialog : public QDialog {
  Q_OBJECT

 public:
  FormDialog(toolkit::Form& form, QWidget* parent = nullptr);

  // Runs the dialog until the form has been unloaded; returns at once if it is not
  // loaded.
  void runModal();

 protected:
  // The close box and Escape ask the form to unload; its Unload handler may refuse.
  void closeEvent(QCloseEvent* event) override;
  void reject() override;

 private:
  void centreOnScreen();

  toolkit::Form& form_;
  QWidget* firstFocus_ = nullptr;
  std::shared_ptr<void> subscription_;
};

}  // namespace velmora::qt
