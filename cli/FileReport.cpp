#include "cli/FileReport.h"

#include "cli/TextForms.h"
#include "cli/Words.h"
#include "platform/Text.h"

#include <json/json.h>

#include <array>
#include <ostream>

namespace {

// Valid UTF-8 whatever the text is: a path of this system may hold any bytes.
Json::Value Text(std::string_view text)
{
    return Utf16ToUtf8(Utf8ToUtf16(text));
}

Json::Value TextOrNull(std::string_view text)
{
    return text.empty() ? Json::Value() : Text(text);
}

std::string OneLine(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

}  // namespace

std::string_view EngineName(std::uint32_t engineKind)
{
    constexpr std::array<std::string_view, 5> Names = {"fast-ntfs", "fast-fat", "deep-ntfs",
                                                       "deep-fat", "carved"};
    return engineKind < Names.size() ? Names[engineKind] : "unknown";
}

ReportedFile ReportOf(const FoundRow& row, const ScanSession& source)
{
    return {row, source.FolderPath(row.record), source.StoreName(row.at.store), {}, {}};
}

ReportedFile ReportOf(const FoundRow& row, const ScanSession& source, const FileOutcome& outcome)
{
    ReportedFile file = ReportOf(row, source);
    file.restoredTo = outcome.written ? outcome.path : std::filesystem::path();
    file.error = WhatWentWrong(outcome);
    file.outcome = &outcome;
    return file;
}

JsonReport::JsonReport(std::ostream& out, std::string_view target) : m_out(out)
{
    m_out << "{\"target\":" << OneLine(Text(target)) << ",\n\"files\":[";
}

void JsonReport::Add(const ReportedFile& file)
{
    const FileRecord& record = file.row.record;
    Json::Value value;
    value["name"] = Text(record.NameText());
    value["path"] = Text(file.folderPath);
    value["size"] = Json::UInt64{record.FileSize};
    value["created"] = TextOrNull(TimeText(record.CreationTime));
    value["accessed"] = TextOrNull(TimeText(record.AccessTime));
    value["written"] = TextOrNull(TimeText(record.WriteTime));
    value["headIntact"] = record.HeadIntact != 0;
    value["engine"] = std::string(EngineName(record.EngineKind));
    value["store"] = TextOrNull(file.store);
    value["record"] = Json::UInt{record.RecordNumber};
    value["place"] = Json::UInt{file.row.at.place};
    value["restoredTo"] = TextOrNull(file.restoredTo.string());
    value["error"] = TextOrNull(file.error);
    if (file.outcome != nullptr) {
        value["state"] = std::string(StateOf(*file.outcome));
        value["missing"] = Json::UInt64{file.outcome->Missing()};
    }
    m_out << (m_found == 0 ? "\n" : ",\n") << OneLine(value);
    ++m_found;
}

void JsonReport::Finish(bool cancelled, const RestoreOutcome* outcome)
{
    const RestoreOutcome counts = outcome != nullptr ? *outcome : RestoreOutcome();
    m_out << "],\n\"found\":" << m_found << ",\"restored\":" << counts.restored
          << ",\"failed\":" << counts.failed << ",\"cancelled\":" << (cancelled ? "true" : "false");
    if (outcome != nullptr) {
        m_out << ",\"incomplete\":" << counts.incomplete << ",\"skipped\":" << counts.wereThere
              << ",\"notTried\":" << counts.notTried;
    }
    m_out << ",\"unreadable\":{\"sectors\":" << m_scan.unreadSectors
          << ",\"places\":" << m_scan.unreadPlaces << "},\"lostRecords\":" << m_scan.lostRecords
          << "}\n";
}
