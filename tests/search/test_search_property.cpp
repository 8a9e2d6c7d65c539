#include <gtest/gtest.h>
TEST(Placeholder, P) {}
