#include "ui/markup/Values.h"

#include "ui/controls/SpanDivider.h"
#include "ui/custom/PagerLayout.h"
#include "ui/custom/WheelGlide.h"
#include "ui/markup/ImageText.h"

#include <gtest/gtest.h>

#include <numeric>

TEST(Values, ReadWhatMarkupWrites)
{
    const std::vector<MarkupAttribute> expected = {{"width", "32"}, {"bkimage", "file='a b.png'"}};
    EXPECT_EQ(ParseAttributeList(R"( width="32"  bkimage = "file='a b.png'" )"), expected);
    EXPECT_TRUE(ParseAttributeList("width=32").empty());
    EXPECT_EQ(ParseAttributeList("a='1' b='2").size(), 1U);
    EXPECT_EQ(ParseColor("#80FF0001"), QColor(255, 0, 1, 128));
    EXPECT_EQ(ParseColor("#FF0001"), QColor(255, 0, 1));
    for (const char* wrong : {"", "#", "red", "#12345", "#GG000000", "0xFF00000"}) {
        EXPECT_FALSE(ParseColor(wrong).isValid()) << wrong;
    }
    EXPECT_EQ(ParseNumber("99999999999999999999"), 0);
    EXPECT_EQ(ParseNumber("999999999999"), MaxMarkupNumber);
    EXPECT_EQ(ParseRect("10,20,5,60"), QRect(10, 20, 0, 40));
    EXPECT_EQ(ParseAlignment("right top", Qt::AlignLeft | Qt::AlignVCenter),
              Qt::AlignRight | Qt::AlignTop);
}

TEST(ImageText, NamesItsParts)
{
    const ImageText whole = ParseImageText("file='point.png' source='0,0,16,16' dest='0,4,16,20'");
    EXPECT_EQ(whole.file, "point.png");
    EXPECT_EQ(whole.source, QRect(0, 0, 16, 16));
    EXPECT_EQ(whole.dest, QRect(0, 4, 16, 16));
    EXPECT_EQ(ParseImageText("file='b.png' corner='0,0,0,70'").corner, QMargins(0, 0, 0, 70));
    EXPECT_EQ(ParseImageText("Icon/a.png").file, "Icon/a.png");
    // What is left of a longer one that was cut at its first blank.
    EXPECT_EQ(ParseImageText("file='Icon/a.png'").file, "Icon/a.png");
}

TEST(ImageText, BordersKeepTheirSizeAndNeverOverlap)
{
    const auto pieces = CutImage(QRect(0, 0, 20, 40), QRect(5, 5, 100, 80), QMargins(4, 6, 4, 8));
    ASSERT_EQ(pieces.size(), 9U);
    EXPECT_EQ(pieces[0].target, QRect(5, 5, 4, 6));
    EXPECT_EQ(pieces[4].source, QRect(4, 6, 12, 26));
    EXPECT_EQ(pieces[4].target, QRect(9, 11, 92, 66));
    EXPECT_EQ(pieces[8].target, QRect(101, 77, 4, 8));
    for (const QMargins& corner :
         {QMargins(), QMargins(0, 0, 0, 70), QMargins(99, 99, 99, 99), QMargins(-5, 3, 0, 1)}) {
        int area = 0;
        for (const ImagePiece& piece :
             CutImage(QRect(0, 0, 20, 40), QRect(0, 0, 30, 100), corner)) {
            area += piece.target.width() * piece.target.height();
            EXPECT_TRUE(QRect(0, 0, 20, 40).contains(piece.source));
        }
        EXPECT_EQ(area, 30 * 100);
    }
}

TEST(SpanDivider, SharesTheRestWithinBounds)
{
    using Spans = std::vector<Span>;
    EXPECT_EQ(DivideSpan({{.fixed = 50}, {}, {.fixed = 30, .before = 5, .behind = 5}}, 10, 200, 10),
              (Spans{{10, 50}, {70, 90}, {175, 30}}));
    EXPECT_EQ(DivideSpan({{}, {}, {}}, 0, 100, 0), (Spans{{0, 33}, {33, 33}, {66, 34}}));
    EXPECT_EQ(DivideSpan({{.share = 5}, {.share = 2}}, 0, 71, 0), (Spans{{0, 50}, {50, 21}}));
    EXPECT_EQ(DivideSpan({{.maximum = 20}, {}, {.minimum = 60}}, 0, 120, 0),
              (Spans{{0, 20}, {20, 40}, {60, 60}}));
    // Without room what is fixed goes over the end, and what shares is gone.
    EXPECT_EQ(DivideSpan({{.fixed = 80}, {}, {.fixed = 80}}, 0, 100, 0),
              (Spans{{0, 80}, {80, 0}, {80, 80}}));
}

TEST(WheelGlide, FirstTurnFallsOffTickByTick)
{
    WheelGlide glide;
    glide.Turn(true);
    EXPECT_EQ(glide.TicksTotal(), 12);  // the root of ten is three
    std::vector<double> steps;
    while (glide.IsRunning()) {
        steps.push_back(glide.Tick());
    }
    ASSERT_EQ(steps.size(), 12U);
    EXPECT_NEAR(steps[0], 10 * (1 - 2.0 / 144), 1e-9);  // eleven of twelve are left
    EXPECT_NEAR(steps[5], 5, 1e-9);                     // half
    EXPECT_NEAR(steps[8], 10 * 2.0 / 16, 1e-9);         // a quarter
    EXPECT_EQ(steps.back(), 0);
    EXPECT_EQ(glide.Delta(), 0);
    EXPECT_EQ(glide.TicksTotal(), 0);
}

TEST(WheelGlide, TurnsAddUpAndTurningBackIsStronger)
{
    WheelGlide glide;
    for (int i = 0; i < 20; ++i) {
        glide.Turn(false);
    }
    EXPECT_EQ(glide.Delta(), -100);
    EXPECT_EQ(glide.TicksLeft(), 40);
    glide.Turn(true);
    EXPECT_EQ(glide.Delta(), -84);
    // Part of the way is carried: at half of the ticks half of it is still to come.
    glide.Stop();
    glide.Turn(true);
    for (int i = 0; i < 6; ++i) {
        glide.Tick();
    }
    glide.Turn(true);
    EXPECT_NEAR(glide.Delta(), 15, 1e-9);
    EXPECT_EQ(glide.TicksTotal(), 16);
}

TEST(PagerLayout, ShowsTheEndsAndWhatIsAroundThePage)
{
    const auto layout = [](int count, int page) { return LayOutPager(count, page, PagerCounts()); };
    using Pages = std::vector<int>;
    EXPECT_EQ(layout(5, 1), (PagerLayout{{1, 2, 3, 4, 5}, false, false}));
    EXPECT_EQ(layout(11, 6).pages.size(), 11U);
    EXPECT_EQ(layout(50, 25),
              (PagerLayout{{1, 2, 22, 23, 24, 25, 26, 27, 28, 49, 50}, true, true}));
    const Pages start = {1, 2, 3, 4, 5, 6, 7, 8, 9, 49, 50};
    EXPECT_EQ(layout(50, 1), (PagerLayout{start, false, true}));
    EXPECT_EQ(layout(50, 6), (PagerLayout{start, false, true}));
    EXPECT_EQ(layout(50, 7).pages, (Pages{1, 2, 4, 5, 6, 7, 8, 9, 10, 49, 50}));
    const Pages end = {1, 2, 42, 43, 44, 45, 46, 47, 48, 49, 50};
    EXPECT_EQ(layout(50, 45), (PagerLayout{end, true, false}));
    EXPECT_EQ(layout(50, 44).pages, (Pages{1, 2, 41, 42, 43, 44, 45, 46, 47, 49, 50}));
    // With twelve pages for eleven buttons both rules of the ends meet: the first one counts.
    EXPECT_EQ(layout(12, 6).pages, (Pages{1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12}));
}
