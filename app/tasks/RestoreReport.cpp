#include "app/tasks/RestoreReport.h"

#include "platform/FileTime.h"
#include "platform/Text.h"
#include "texts/LanguageSection.h"
#include "texts/TextFormat.h"
#include "texts/TextForms.h"

#include <algorithm>
#include <cstdio>

namespace {

std::string TimeNow()
{
    const CalendarTime now = LocalTimeNow();
    char text[96] = {};
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", now.year, now.month, now.day,
                  now.hour, now.minute, now.second);
    return text;
}

int RankOf(const ReportRow& row)
{
    return !row.isGood ? 0 : row.missingBytes != 0 ? 1 : 2;
}

}  // namespace

std::string DamageText(const ReportRow& row, LanguageSection& extras)
{
    return row.missingBytes == 0
               ? std::string()
               : FormatText(extras.Get("EXT0253"),
                            FormatSize(static_cast<std::int64_t>(
                                std::min<std::uint64_t>(row.missingBytes, INT64_MAX))));
}

std::string RestoreReportText(const std::vector<ReportRow>& rows,
                              std::string_view summary,
                              LanguageSection& extras)
{
    std::vector<const ReportRow*> sorted;
    sorted.reserve(rows.size());
    for (const ReportRow& row : rows) {
        sorted.push_back(&row);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const ReportRow* left, const ReportRow* right) {
                         return RankOf(*left) < RankOf(*right);
                     });
    std::string text = extras.Get("EXT0257") + "\n" + TimeNow() + "\n\n";
    for (const ReportRow* const row : sorted) {
        const std::string damage = DamageText(*row, extras);
        text += row->status + (damage.empty() ? "" : "; " + damage) + "\t" + Printable(row->path) +
                "\n";
    }
    return text + "\n" + std::string(summary) + "\n";
}
