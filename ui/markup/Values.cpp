#include "ui/markup/Values.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>

namespace {

bool IsNameLetter(QChar letter)
{
    return letter.isLetterOrNumber() || letter == QLatin1Char('_') || letter == QLatin1Char('-');
}

qsizetype SkipBlanks(const QString& text, qsizetype at)
{
    while (at < text.size() && text[at].isSpace()) {
        ++at;
    }
    return at;
}

std::array<int, 4> ParseFour(const QString& text)
{
    std::array<int, 4> numbers = {};
    const QStringList parts = text.split(QLatin1Char(','));
    for (std::size_t i = 0; i < numbers.size() && static_cast<qsizetype>(i) < parts.size(); ++i) {
        numbers[i] = ParseNumber(parts[static_cast<qsizetype>(i)]);
    }
    return numbers;
}

}  // namespace

std::vector<MarkupAttribute> ParseAttributeList(const QString& text)
{
    std::vector<MarkupAttribute> attributes;
    qsizetype at = SkipBlanks(text, 0);
    while (at < text.size()) {
        const qsizetype nameStart = at;
        while (at < text.size() && IsNameLetter(text[at])) {
            ++at;
        }
        const QString name = text.mid(nameStart, at - nameStart);
        at = SkipBlanks(text, at);
        if (name.isEmpty() || at >= text.size() || text[at] != QLatin1Char('=')) {
            break;
        }
        at = SkipBlanks(text, at + 1);
        if (at >= text.size() || (text[at] != QLatin1Char('"') && text[at] != QLatin1Char('\''))) {
            break;
        }
        const qsizetype end = text.indexOf(text[at], at + 1);
        if (end < 0) {
            break;
        }
        attributes.push_back({name, text.mid(at + 1, end - at - 1)});
        at = SkipBlanks(text, end + 1);
    }
    return attributes;
}

int ParseNumber(const QString& text)
{
    bool isNumber = false;
    const qlonglong number = text.trimmed().toLongLong(&isNumber);
    return isNumber
               ? static_cast<int>(std::clamp<qlonglong>(number, -MaxMarkupNumber, MaxMarkupNumber))
               : 0;
}

bool ParseTruth(const QString& text)
{
    return text == QLatin1String("true") || text == QLatin1String("1");
}

QColor ParseColor(const QString& text)
{
    const bool hasLength = text.size() == 7 || text.size() == 9;
    bool isNumber = false;
    const uint number = text.mid(1).toUInt(&isNumber, 16);
    if (!hasLength || !isNumber || text[0] != QLatin1Char('#')) {
        return {};
    }
    return text.size() == 9 ? QColor::fromRgba(number) : QColor::fromRgb(number);
}

QSize ParseSize(const QString& text)
{
    const std::array<int, 4> numbers = ParseFour(text);
    return {std::max(numbers[0], 0), std::max(numbers[1], 0)};
}

QMargins ParseMargins(const QString& text)
{
    const std::array<int, 4> numbers = ParseFour(text);
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

QRect ParseRect(const QString& text)
{
    const std::array<int, 4> numbers = ParseFour(text);
    return {numbers[0], numbers[1], std::max(numbers[2] - numbers[0], 0),
            std::max(numbers[3] - numbers[1], 0)};
}

Qt::Alignment ParseAlignment(const QString& text, Qt::Alignment defaults)
{
    struct Word
    {
        const char* name;
        Qt::AlignmentFlag flag;
    };
    static constexpr std::array<Word, 6> Words = {{{"left", Qt::AlignLeft},
                                                   {"center", Qt::AlignHCenter},
                                                   {"right", Qt::AlignRight},
                                                   {"top", Qt::AlignTop},
                                                   {"vcenter", Qt::AlignVCenter},
                                                   {"bottom", Qt::AlignBottom}}};
    static const QRegularExpression separator(QStringLiteral("[ ,]+"));
    Qt::Alignment alignment = defaults;
    for (const QString& part : text.split(separator, Qt::SkipEmptyParts)) {
        for (const Word& word : Words) {
            if (part == QLatin1String(word.name)) {
                const Qt::Alignment direction = (word.flag & Qt::AlignHorizontal_Mask) != 0
                                                    ? Qt::AlignHorizontal_Mask
                                                    : Qt::AlignVertical_Mask;
                alignment = (alignment & ~direction) | word.flag;
            }
        }
    }
    return alignment;
}
