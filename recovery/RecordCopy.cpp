#include "recovery/RecordCopy.h"

#include "platform/Folders.h"
#include "recovery/CopyScope.h"
#include "recovery/RestoreSupport.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

namespace {

constexpr std::uint64_t LargestWhole =
    0xFFFFFFFF;  // the length of a whole piece is read in 32 bits

// Told of a step: percent and error so far. No function when nobody is told.
using Tell = std::function<ResultCode(std::int32_t percent, ResultCode error)>;

// Where the bytes go.
class Sink
{
public:
    explicit Sink(OutputFile& file) : m_file(&file) {}
    explicit Sink(std::span<std::uint8_t> buffer) : m_buffer(buffer) {}

    bool IsBuffer() const { return m_file == nullptr; }
    std::size_t Copied() const { return m_copied; }
    ResultCode Take(std::span<const std::uint8_t> bytes, std::size_t* outTaken)
    {
        if (m_file != nullptr) {
            return m_file->Write(bytes.data(), bytes.size(), outTaken);
        }
        *outTaken = bytes.size();
        if (!bytes.empty()) {
            std::memcpy(m_buffer.data() + m_copied, bytes.data(), bytes.size());
        }
        m_copied += bytes.size();
        return ResultSuccess;
    }

private:
    OutputFile* m_file = nullptr;
    std::span<std::uint8_t> m_buffer;
    std::size_t m_copied = 0;
};

// A size of half of all numbers is hostile; the figure may be wrong then, the copy is not.
std::int32_t Percent(std::uint64_t done, std::uint64_t total)
{
    return static_cast<std::int32_t>(total != 0 ? done * 100 / total : 100);
}

ResultCode Told(const Tell& tell, std::int32_t percent, ResultCode error)
{
    return tell ? tell(percent, error) : ResultSuccess;
}

// One copy from the first byte to its end.
class RecordCopy
{
public:
    RecordCopy(IRecordReader& reader, Sink& sink, std::uint64_t wanted, const Tell& tell)
        : m_reader(reader), m_manners(reader.Manners()), m_sink(sink), m_total(wanted), m_tell(tell)
    {
    }

    ResultCode Run()
    {
        std::size_t bufferBytes = 0;
        ResultCode result = m_reader.Begin(m_total, &bufferBytes);
        if (result == ResultSuccess && m_total == 0 && m_manners.tellsEmptyFile) {
            m_toldEmpty = true;
            return Told(m_tell, 100, ResultSuccess);
        }
        m_buffer.resize(bufferBytes);
        bool atEnd = false;
        while (result == ResultSuccess && !atEnd && (m_manners.readsToItsEnd || m_done < m_total)) {
            result = Step(&atEnd);
        }
        return result;
    }
    // The copy was over with the one call for an empty file.
    bool ToldEmpty() const { return m_toldEmpty; }

private:
    ResultCode Step(bool* outAtEnd)
    {
        std::size_t got = 0;
        bool isWhole = false;
        if (const ResultCode result = m_reader.Next(m_buffer, &got, &isWhole)) {
            return result;
        }
        *outAtEnd = got == 0 || isWhole;
        if (isWhole) {
            return TakeWhole(got);
        }
        const std::uint64_t count = std::min<std::uint64_t>(got, m_total - m_done);
        // A buffer that is full ends the copy; a file's runs are read on.
        *outAtEnd = *outAtEnd || (m_sink.IsBuffer() && count == 0);
        return *outAtEnd ? ResultSuccess : TakePiece(count);
    }

    ResultCode TakeWhole(std::size_t got)
    {
        const std::size_t count = std::min<std::size_t>(got, m_total & LargestWhole);
        std::size_t taken = 0;
        const ResultCode result = m_sink.Take(std::span(m_buffer).first(count), &taken);
        const ResultCode answer = Told(m_tell, 100, result);
        return answer != ResultSuccess ? answer : result;
    }

    ResultCode TakePiece(std::uint64_t count)
    {
        std::size_t taken = 0;
        const ResultCode result = m_sink.Take(std::span(m_buffer).first(count), &taken);
        m_done += taken;
        if (CopyScope* const scope = CopyScope::Current()) {
            scope->TakePiece(taken);
        }
        if (result != ResultSuccess && (!m_manners.answerReplacesWriteError || !m_tell)) {
            return result;
        }
        const ResultCode answer = Told(m_tell, Percent(m_done, m_total), result);
        return answer == ResultSuccess && taken == 0 ? result : answer;
    }

    IRecordReader& m_reader;
    const CopyManners m_manners;
    Sink& m_sink;
    const std::uint64_t m_total;
    const Tell& m_tell;
    std::uint64_t m_done = 0;
    bool m_toldEmpty = false;
    std::vector<std::uint8_t> m_buffer;
};

// Half a picture is of no use; what cannot be removed is replaced by the next preview.
void DropPreview(OutputFile& file, const CopyManners& manners, std::filesystem::path& path)
{
    file.Close();
    (void)RemoveFile(path);
    if (manners.clearsPreviewPath) {
        path.clear();
    }
}

}  // namespace

ResultCode RestoreData(IRecordReader& reader,
                       const FileRecord& record,
                       const std::filesystem::path& path,
                       FileProgressCallback fileCallback,
                       void* context)
{
    Tell tell;
    if (fileCallback != nullptr) {
        tell = [&](std::int32_t percent, ResultCode error) {
            return fileCallback(context, percent, 100, error, path);
        };
    }
    OutputFile output;
    ResultCode result = output.Open(path);
    if (result != ResultSuccess && !reader.Manners().tellsOpenFailure) {
        return result;
    }
    bool toldEmpty = false;
    if (result == ResultSuccess) {
        Sink sink(output);
        RecordCopy copy(reader, sink, record.FileSize, tell);
        result = copy.Run();
        toldEmpty = copy.ToldEmpty();  // what it is answered is not told again, unlike a preview's
    }
    if (result > 0 && !toldEmpty) {
        (void)Told(tell, 100, result);
    }
    return result;
}

ResultCode
PreviewData(IRecordReader& reader, const FileRecord& record, const PreviewRequest& request)
{
    Tell tell;
    if (request.progressFn != nullptr) {
        tell = [&](std::int32_t percent, ResultCode error) {
            return request.progressFn(request.context, percent, error);
        };
    }
    const CopyManners manners = reader.Manners();
    const bool toFile = PreviewNeedsFile(record.NameText());
    OutputFile file;
    ResultCode result = ResultSuccess;
    if (toFile) {
        result = OpenPreviewFile(request.root, record.NameText(), request.tempPath, file);
        if (result != ResultSuccess && !manners.tellsOpenFailure) {
            return result;
        }
    }
    const std::size_t capacity = request.buffer != nullptr ? request.inOutSize : 0;
    Sink sink = toFile ? Sink(file) : Sink({request.buffer, capacity});
    if (result == ResultSuccess) {
        const std::uint64_t size = record.FileSize;
        result =
            RecordCopy(reader, sink, toFile ? size : std::min<std::uint64_t>(size, capacity), tell)
                .Run();
    }
    if (result > 0) {
        (void)Told(tell, 100, result);
    }
    if (file.IsOpen() && result != ResultSuccess) {
        DropPreview(file, manners, request.tempPath);
    }
    request.inOutSize = static_cast<std::uint32_t>(sink.Copied());
    return result;
}
