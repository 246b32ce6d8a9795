// One QApplication for the whole test program, made before the first test and gone
// before main returns. Widgets draw offscreen unless the caller chose a platform.
#include <memory>

#include <gtest/gtest.h>
#include <QApplication>

namespace {

int argc = 1;
char name[] = "test_qt";
char* argv[] = {name, nullptr};

class QtApplication : public testing::Environment {
  void SetUp() override {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    app_ = std::make_unique<QApplication>(argc, argv);
  }
  void TearDown() override { app_.reset(); }
  std::unique_ptr<QApplication> app_;
};

// gtest takes ownership of the environment.
[[maybe_unused]] testing::Environment* const kEnvironment =
    testing::AddGlobalTestEnvironment(new QtApplication);

}  // namespace
