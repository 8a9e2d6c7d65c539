#include "ZDByteSearch.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

bool plainContains(const std::string &text, const std::string &needle)
{
    return text.find(needle) != std::string::npos;
}

bool fastContains(const std::string &text, const std::string &needle)
{
    return ZDByteSearch::contains(text.data(), text.size(), needle.data(), needle.size());
}

} // namespace

// The block-wise search against a plain one, over small alphabets (many near misses where the
// first and last bytes agree), bytes above 0x7f, and needles placed across block edges and at
// the very end of the text.
TEST(ByteSearch, AgreesWithPlainSearch)
{
    std::mt19937 rng(7);
    const std::string alphabets[] = {"ab", "abc ", std::string("a\x80\xff", 3), "for item in\n"};
    for (int round = 0; round < 20000; ++round) {
        const std::string &alphabet = alphabets[size_t(round) % std::size(alphabets)];
        auto pick = [&] { return alphabet[rng() % alphabet.size()]; };
        std::string text(rng() % 90, ' ');
        for (char &c : text)
            c = pick();
        std::string needle(rng() % 20, ' ');
        for (char &c : needle)
            c = pick();
        if (round % 3 == 0 && needle.size() <= text.size()) {
            // Plant the needle (or all of it but its last byte) at any place, the end included.
            const size_t at = rng() % (text.size() - needle.size() + 1);
            text.replace(at, needle.size(), needle);
            if (round % 2 == 0 && !needle.empty())
                text[at + needle.size() - 1] ^= 1;
        }
        ASSERT_EQ(fastContains(text, needle), plainContains(text, needle))
            << "text \"" << text << "\" needle \"" << needle << '"';
    }
}

TEST(ByteSearch, EdgeCases)
{
    EXPECT_TRUE(fastContains("", ""));
    EXPECT_TRUE(fastContains("abc", ""));
    EXPECT_FALSE(fastContains("", "a"));
    EXPECT_FALSE(fastContains("ab", "abc"));
    const std::string text(64, 'x');
    EXPECT_TRUE(fastContains(text + "async function", "async function"));
    EXPECT_FALSE(fastContains(text + "async functio", "async function"));
    EXPECT_TRUE(fastContains("async function" + text, "async function"));
}
