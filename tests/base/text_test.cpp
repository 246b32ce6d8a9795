#include <gtest/gtest.h>

#include <velmora/base/text.h>

namespace velmora {
namespace {

TEST(Text, Utf8RoundTrip) {
  const std::string s = "Tâche à faire €";
  const Text t = fromUtf8(s);
  EXPECT_EQ(t.size(), 15u);
  EXPECT_EQ(toUtf8(t), s);
}

}  // namespace
}  // namespace velmora
