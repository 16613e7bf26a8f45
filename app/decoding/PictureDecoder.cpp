#include "app/decoding/PictureDecoder.h"

#include "decoder/DecoderProtocol.h"
#include "platform/Folders.h"
#include "platform/InstallPaths.h"
#include "platform/MessageChannel.h"
#include "platform/SharedMemory.h"

#include <utility>

namespace {

constexpr int StartMilliseconds = 15000;  // from a cold disk, on a busy computer
constexpr int MostMilliseconds = 2000;    // a picture

// Nothing when none came in time, or another one.
std::optional<DecoderAnswer>
AnswerTo(std::uint32_t number, const FileHandle& channel, int milliseconds)
{
    if (WaitForMessage(channel, milliseconds) != MessageWait::Came) {
        return std::nullopt;
    }
    DecoderAnswer answer;
    const ReceivedMessage message = ReceiveMessage(channel, &answer, sizeof answer);
    const bool isIt = message.bytes == sizeof answer && !message.isCut &&
                      message.descriptors.empty() && answer.mark == DecoderMark &&
                      answer.number == number;
    return isIt ? std::optional(answer) : std::nullopt;
}

bool IsNothing(const DecoderAnswer& answer)
{
    return answer.width == 0 && answer.height == 0;
}

bool IsPossible(const DecoderAnswer& answer, int mostSide)
{
    return answer.width > 0 && answer.height > 0 && answer.width <= mostSide &&
           answer.height <= mostSide;
}

// Copied, and never looked at where the decoder can still write.
DecodedPicture TakePixels(const DecoderAnswer& answer, const FileHandle& memory)
{
    DecodedPicture picture;
    picture.pixels.resize(static_cast<std::size_t>(answer.width) *
                          static_cast<std::size_t>(answer.height));
    const std::size_t bytes = picture.pixels.size() * sizeof picture.pixels[0];
    std::size_t read = 0;
    if (memory.ReadAt(0, picture.pixels.data(), bytes, &read) == ResultSuccess && read == bytes) {
        picture.width = answer.width;
        picture.height = answer.height;
    }
    return picture;
}

}  // namespace

PictureDecoder::PictureDecoder() : PictureDecoder(InstalledPath(DecoderBelowPrefix)) {}

PictureDecoder::PictureDecoder(std::filesystem::path program) : m_path(std::move(program)) {}

PictureDecoder::~PictureDecoder()
{
    Stop();
}

DecodedPicture PictureDecoder::Decode(const std::filesystem::path& file, PictureUse use)
{
    FileHandle picture;
    return picture.OpenForReading(file) == ResultSuccess ? Ask(picture, use) : DecodedPicture();
}

DecodedPicture PictureDecoder::Decode(std::span<const std::uint8_t> bytes, PictureUse use)
{
    FileHandle picture;
    return ShareBytes(bytes, picture) == ResultSuccess ? Ask(picture, use) : DecodedPicture();
}

DecodedPicture PictureDecoder::Ask(const FileHandle& picture, PictureUse use)
{
    DecoderRequest request;
    request.mostSide = use == PictureUse::Thumbnail ? ThumbnailSide : MostPictureSide;
    request.isRough = use == PictureUse::Thumbnail ? 1 : 0;
    const auto side = static_cast<std::uint64_t>(request.mostSide);
    FileHandle memory;
    if (!picture.IsRegularFile() || picture.Size(&request.pictureBytes) != ResultSuccess ||
        MakeSharedMemory(side * side * BytesAPixel, memory) != ResultSuccess) {
        return {};
    }
    const std::lock_guard held(m_lock);
    if (!IsRunning() && !Start()) {
        return {};
    }
    request.number = ++m_number;
    if (SendMessage(m_channel, &request, sizeof request,
                    {picture.Descriptor(), memory.Descriptor()}) == ResultSuccess) {
        const auto answer = AnswerTo(request.number, m_channel, MostMilliseconds);
        if (answer && IsPossible(*answer, request.mostSide)) {
            return TakePixels(*answer, memory);
        }
        if (answer && IsNothing(*answer)) {
            return {};
        }
    }
    Stop();
    return {};
}

bool PictureDecoder::IsRunning()
{
    if (m_program && m_program->HasEnded()) {
        Stop();
    }
    return m_program.has_value();
}

bool PictureDecoder::Start()
{
    FileHandle theirs;
    if (MakeChannel(m_channel, theirs) != ResultSuccess) {
        return false;
    }
    m_program.emplace();
    if (m_program->StartOnChannel(m_path, theirs) == ResultSuccess) {
        theirs.Close();  // so that its end is seen here
        m_number = 0;
        if (AnswerTo(m_number, m_channel, StartMilliseconds)) {
            return true;
        }
    }
    Stop();
    return false;
}

void PictureDecoder::Stop()
{
    m_channel.Close();
    if (m_program) {
        m_program->Kill();
        m_program.reset();
    }
}
