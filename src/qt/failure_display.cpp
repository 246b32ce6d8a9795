// How a failure that escapes a gesture is shown: handed to the enclosing VelmoraWidget,
// which emits it to a listening host, or else shown by the process's presenter (a warning
// box by default). guarded() is the one place where exceptions stop before Qt's loop.
#include <velmora/qt/failure_display.h>

#include <QAbstractButton>
#include <QMessageBox>

#include <velmora/qt/velmora_widget.h>

namespace velmora::qt {

namespace {

void showWarning(QWidget* parent, const Failure& failure) {
  QMessageBox box(QMessageBox::Warning, QStringLiteral("Erreur"), failureText(failure),
                  QMessageBox::Ok, parent);
  box.button(QMessageBox::Ok)->setText(QStringLiteral("OK"));
  box.exec();
}

FailurePresenter& presenter() {
  static FailurePresenter current = showWarning;
  return current;
}

}  // namespace

void setFailurePresenter(FailurePresenter replacement) {
  presenter() = replacement ? std::move(replacement) : FailurePresenter(showWarning);
}

void presentFailure(QWidget* parent, const Failure& failure) {
  // A gesture inside a VelmoraWidget reports through it, so that a host that listens
  // to its failed() signal gets this failure too.
  for (QWidget* up = parent; up != nullptr; up = up->parentWidget()) {
    if (auto* widget = qobject_cast<VelmoraWidget*>(up); widget != nullptr && widget != parent) {
      widget->reportFailure(failure);
      return;
    }
  }
  presenter()(parent, failure);
}

QString failureText(const Failure& failure) {
  return QStringLiteral("Erreur n° %1 :\n%2")
      .arg(failure.number())
      .arg(QString::fromUtf8(failure.what()));
}

void guarded(QWidget* parent, const std::function<void()>& gesture) {
  try {
    gesture();
  } catch (const Failure& failure) {
    presentFailure(parent, failure);
  } catch (const std::exception& other) {
    // Anything else is a fault of the program; it still must not unwind through Qt.
    presentFailure(parent, Failure(errors::kInvalidCall, other.what()));
  }
}

}  // namespace velmora::qt
