#include <velmora/qt/failure_display.h>

#include <QMessageBox>

#include <velmora/qt/velmora_widget.h>

namespace velmora::qt {

namespace {

void showWarning(QWidget* parent, const Failure& failure) {
  QMessageBox::warning(parent, QStringLiteral("Velmora"), failureText(failure));
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
  return QStringLiteral("Erreur %1\n%2")
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
