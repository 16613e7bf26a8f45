#include "session/EarlierFiles.h"

#include "platform/FileHandle.h"
#include "platform/Folders.h"
#include "platform/Text.h"
#include "platform/UniquePath.h"

#include <algorithm>
#include <functional>

namespace {

constexpr std::size_t PieceBytes = 65536;

bool OpenPlain(const std::filesystem::path& path, FileHandle& file, std::uint64_t* outSize)
{
    std::error_code ignored;
    return std::filesystem::is_regular_file(std::filesystem::symlink_status(path, ignored)) &&
           file.OpenForReading(path) == ResultSuccess && file.Size(outSize) == ResultSuccess;
}

bool ReadPiece(const FileHandle& file, std::uint64_t position, std::vector<std::uint8_t>& piece)
{
    std::size_t got = 0;
    return file.ReadAt(position, piece.data(), piece.size(), &got) == ResultSuccess &&
           got == piece.size();
}

bool HoldSameBytes(const std::filesystem::path& left, const std::filesystem::path& right)
{
    FileHandle leftFile;
    FileHandle rightFile;
    std::uint64_t size = 0;
    std::uint64_t rightSize = 0;
    if (!OpenPlain(left, leftFile, &size) || !OpenPlain(right, rightFile, &rightSize) ||
        size != rightSize) {
        return false;
    }
    std::vector<std::uint8_t> leftPiece;
    std::vector<std::uint8_t> rightPiece;
    for (std::uint64_t at = 0; at < size; at += leftPiece.size()) {
        leftPiece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(PieceBytes, size - at)));
        rightPiece.resize(leftPiece.size());
        if (!ReadPiece(leftFile, at, leftPiece) || !ReadPiece(rightFile, at, rightPiece) ||
            leftPiece != rightPiece) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::size_t EarlierFiles::KeyOf(const std::filesystem::path& path) const
{
    return std::hash<std::string>()(m_ignoresCase ? LowerAscii(path.string()) : path.string());
}

const std::vector<EarlierFiles::Candidate>&
EarlierFiles::CandidatesFor(const std::filesystem::path& wanted)
{
    const auto [known, isNew] = m_candidates.try_emplace(wanted.string());
    std::filesystem::path path = wanted;
    for (std::uint64_t number = 1; isNew && PathExists(path); ++number) {
        FileHandle file;
        std::uint64_t size = 0;
        if (m_taken.count(KeyOf(path)) == 0 && OpenPlain(path, file, &size)) {
            known->second.push_back({path, size});
        }
        path = UniquePaths::Numbered(wanted, number);
    }
    return known->second;
}

std::filesystem::path EarlierFiles::TakeEqual(const std::filesystem::path& wanted,
                                              const std::filesystem::path& part)
{
    FileHandle file;
    std::uint64_t size = 0;
    if (!PathExists(wanted) || !OpenPlain(part, file, &size)) {
        return {};
    }
    for (const Candidate& candidate : CandidatesFor(wanted)) {
        if (candidate.size == size && m_taken.count(KeyOf(candidate.path)) == 0 &&
            HoldSameBytes(candidate.path, part)) {
            Add(candidate.path);
            return candidate.path;
        }
    }
    return {};
}
