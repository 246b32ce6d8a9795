#include <clocale>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  // Take the locale from the environment, as a Qt application does: a run under
  // LANG=fr_FR.UTF-8 then exercises what a planner's machine does.
  std::setlocale(LC_ALL, "");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
