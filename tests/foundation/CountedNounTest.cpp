#include "foundation/CountedNoun.h"

#include <gtest/gtest.h>

namespace {

// Counts say "1 photo" but "0 photos" and "2 photos".
TEST(CountedNoun, OnlyOneIsSingular)
{
    for (const auto &[count, text] : {std::pair{0, "0 photos"}, {1, "1 photo"}, {2, "2 photos"}})
        EXPECT_EQ(CountedNoun::text(count, QStringLiteral("photo"), QStringLiteral("photos")), QLatin1String(text));
}

} // namespace
