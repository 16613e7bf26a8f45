// The markup inside texts: it becomes runs, a layout of any width, and the text that is read out.
#include "ui/markup/TextFlow.h"

#include <algorithm>
#include <cstdlib>

namespace {

class FakeMeasure : public TextMeasure
{
public:
    int Width(int, const QString& text) const override { return static_cast<int>(text.size()) * 7; }
    int Ascent(int font) const override { return 9 + std::clamp(font, 0, 9); }
    int Descent(int) const override { return 3; }
    QSize ImageSize(const TextRun& run) const override { return {16 / run.frames, 16}; }
};

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string bytes(data + 1, data + std::min<std::size_t>(size, 4096));
    const QString text = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    const std::vector<TextRun> runs = ParseTextMarkup(text, true);
    (void)PlainText(runs);
    for (const bool wraps : {false, true}) {
        const TextArea area = {QRect(0, 0, data[0] * 4, 40), Qt::AlignHCenter | Qt::AlignVCenter,
                               wraps};
        for (const PlacedRun& placed : FlowText(runs, FakeMeasure(), area).placed) {
            Require(placed.run < runs.size());
        }
    }
    // Put in as a plain value it is never read as markup.
    for (const TextRun& run : ParseTextMarkup(PlainRun(text), true)) {
        Require(run.kind == RunKind::Text && run.font < 0 && run.link < 0);
    }
    return 0;
}
