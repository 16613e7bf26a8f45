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

ReportedFile ReportOf(const FoundRow& row, const ScanRun& run)
{
    const ScanPart& part = run.PartOf(row);
    ReportedFile file = {row,
                         part.source->FolderPath(row.record),
                         part.source->StoreName(row.at.store),
                         {},
                         {},
                         nullptr,
                         0,
                         {}};
    file.part = part.row ? part.row->number : 0;
    if (row.doubleOf) {
        file.doubleStore = part.source->StoreName(row.doubleOf->store);
    }
    return file;
}

ReportedFile ReportOf(const FoundRow& row, const ScanRun& run, const FileOutcome& outcome)
{
    ReportedFile file = ReportOf(row, run);
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
    if (file.part != 0) {
        value["part"] = Json::UInt{file.part};
    }
    value["engine"] = std::string(EngineName(record.EngineKind));
    value["store"] = TextOrNull(file.store);
    value["record"] = Json::UInt{record.RecordNumber};
    value["place"] = Json::UInt{file.row.at.place};
    if (const std::optional<StorePlace>& shown = file.row.doubleOf) {
        value["doubleOf"]["engine"] = std::string(EngineName(shown->store));
        value["doubleOf"]["store"] = TextOrNull(file.doubleStore);
        value["doubleOf"]["place"] = Json::UInt{shown->place};
    }
    value["restoredTo"] = TextOrNull(file.restoredTo.string());
    value["error"] = TextOrNull(file.error);
    if (file.outcome != nullptr) {
        value["state"] = std::string(StateOf(*file.outcome));
        value["missing"] = Json::UInt64{file.outcome->Missing()};
        if (file.outcome->claimsTooMuch) {
            value["claimsTooMuch"] = true;
        }
    }
    m_out << (m_found == 0 ? "\n" : ",\n") << OneLine(value);
    ++m_found;
}

namespace {

std::string_view StateOfPart(const ScanPart& part)
{
    switch (part.state) {
    case PartState::NotOpened:
        return part.isMissing ? "notOpened" : "nothingToRead";
    case PartState::NotScanned:
        return "notScanned";
    case PartState::Failed:
        return "failed";
    case PartState::Scanned:
        break;
    }
    switch (part.outcome.end) {
    case ScanEnd::Complete:
        return part.outcome.unreadSectors == 0 && part.outcome.whyLost == ResultSuccess
                   ? "complete"
                   : "incomplete";
    case ScanEnd::Stopped:
    case ScanEnd::StoppedAtOnce:
    case ScanEnd::Interrupted:
        return "stopped";
    case ScanEnd::Incomplete:
    case ScanEnd::Failed:
    case ScanEnd::Broken:
        break;
    }
    return "incomplete";
}

Json::Value PartsOf(const ScanRun& run)
{
    Json::Value parts(Json::arrayValue);
    for (const ScanPart& part : run.Parts()) {
        Json::Value value;
        value["number"] = Json::UInt{part.row->number};
        value["kind"] = std::string(KindName(part.row->kind));
        value["startSector"] = Json::UInt64{part.row->startSector};
        value["sectorCount"] = Json::UInt64{part.row->sectorCount};
        value["sectorSize"] = Json::UInt{part.row->disk.sectorSize};
        value["fileSystem"] = Text(part.row->fileSystem);
        value["label"] = Text(part.row->label);
        value["state"] = std::string(StateOfPart(part));
        value["found"] = Json::UInt64{part.files};
        value["unreadableSectors"] = Json::UInt64{part.outcome.unreadSectors};
        parts.append(std::move(value));
    }
    return parts;
}

}  // namespace

void JsonReport::Finish(const ScanRun& run, const RestoreOutcome* outcome)
{
    const RestoreOutcome counts = outcome != nullptr ? *outcome : RestoreOutcome();
    const ScanOutcome scan = run.Scanned();
    m_out << "],\n\"found\":" << m_found << ",\"doublesLeftOut\":" << run.Doubles()
          << ",\"restored\":" << counts.restored << ",\"failed\":" << counts.failed
          << ",\"cancelled\":" << (run.Cancelled() ? "true" : "false");
    if (outcome != nullptr) {
        m_out << ",\"incomplete\":" << counts.incomplete << ",\"skipped\":" << counts.wereThere
              << ",\"notTried\":" << counts.notTried;
    }
    m_out << ",\"unreadable\":{\"sectors\":" << scan.unreadSectors
          << ",\"places\":" << scan.unreadPlaces << "},\"lostRecords\":" << scan.lostRecords;
    if (run.HasParts()) {
        m_out << ",\n\"parts\":" << OneLine(PartsOf(run));
    }
    m_out << "}\n";
}
