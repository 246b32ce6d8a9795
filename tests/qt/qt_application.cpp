// One QApplication for the whole test program, made before the first test and gone
// before main returns. Widgets draw offscreen unless the caller chose a platform.
#include <memory>

#include <gtest/gtest.h>
#include <QApplication>

namespace {

class QtApplication : public testing::Environment {
  void SetUp() override {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    app_ = std::make_unique<QApplication>(argc_, argv_);
  }
  void TearDown() override { app_.reset(); }
  int argc_ = 1;
  char name_[8] = "test_qt";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> app_;
};

// gtest takes ownership of the environment.
[[maybe_unused]] testing::Environment* const kEnvironment =
    testing::AddGlobalTestEnvironment(new QtApplication);

}  // namespace
