// lumivault-cli scan: a table of what was found, by family and extension.
#include "cli/ScanRun.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "platform/Text.h"
#include "recovery/FileTypeCatalogue.h"

#include <algorithm>
#include <iomanip>
#include <map>
#include <ostream>

namespace {

struct Tally
{
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t headsLost = 0;
};

// In the order of the restore folders' names.
constexpr std::string_view Families[] = {"photo",    "audio",   "video",
                                         "document", "archive", "others"};

using FamilyTally = std::map<std::string, Tally, std::less<>>;  // by extension

void WriteRow(std::ostream& out,
              std::string_view family,
              std::string_view extension,
              const Tally& tally)
{
    out << std::left << std::setw(10) << family << Cell(extension, 12) << std::right << std::setw(9)
        << tally.files << std::setw(12) << SizeText(tally.bytes) << std::setw(11) << tally.headsLost
        << '\n';
}

void WriteTable(const std::vector<FoundRow>& rows, std::ostream& out)
{
    std::map<std::string_view, FamilyTally> families;
    Tally all;
    for (const FoundRow& found : rows) {
        const FileRecord& record = found.record;
        const std::string extension = LowerExtensionOf(record.NameText());
        // To the catalogue a file without an extension is a photo, and is restored and searched as one. That is no help to
        // somebody who counts photos.
        Tally& row = families[extension.empty() ? "others" : CategoryFolderName(record.NameText())]
                             [extension];
        for (Tally* tally : {&row, &all}) {
            ++tally->files;
            tally->bytes += record.FileSize;
            tally->headsLost += record.HeadIntact == 0 ? 1u : 0u;
        }
    }
    out << "Family    Extension       Files        Size  Head lost\n";
    for (const std::string_view family : Families) {
        for (const auto& [extension, tally] : families[family]) {
            WriteRow(out, family,
                     extension.empty() ? std::string_view("(none)") : std::string_view(extension),
                     tally);
        }
    }
    WriteRow(out, "all", "", all);
}

void WriteParts(const ScanRun& run, std::ostream& out)
{
    out << "\nPart   Kind       File system        Size    Files\n";
    for (const ScanPart& part : run.Parts()) {
        const TargetRow& row = *part.row;
        out << std::left << std::setw(7) << "#" + std::to_string(unsigned{row.number})
            << std::setw(11) << KindName(row.kind) << Cell(row.fileSystem, 12) << std::right
            << std::setw(11) << SizeText(row.sectorCount * row.disk.sectorSize);
        if (part.state == PartState::Scanned) {
            out << std::setw(9) << part.files << '\n';
        } else {
            out << std::setw(9) << '-' << '\n';
        }
    }
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    ScanRun run(options, streams, session);
    if (const std::optional<Refusal> refusal = run.OpenAndFind(TypeFilter::All())) {
        return Refuse(*refusal, streams);
    }
    WriteTable(run.Rows(), streams.out);
    if (run.HasParts()) {
        WriteParts(run, streams.out);
    }
    return run.Status();
}

}  // namespace

const Command ScanCommand = {"scan",
                             "scan a target and show what can be found, by family and extension",
                             "  lumivault-cli scan card.img\n"
                             "  lumivault-cli scan disk.img             all partitions and gaps\n"
                             "  lumivault-cli scan 'disk.img#2'\n"
                             "  sudo lumivault-cli scan /dev/sdb1\n",
                             &AddScanOptions, &Run};
