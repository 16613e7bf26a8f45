// Has pictures decoded by lumivault-decoder, which a hostile picture may break, freeze or fill without harm to this program.
#pragma once

#include "platform/FileHandle.h"
#include "platform/Process.h"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

struct DecodedPicture
{
    int width = 0;  // 0: no picture
    int height = 0;
    std::vector<std::uint32_t> pixels;  // premultiplied, 0xAARRGGBB, line by line

    bool IsNull() const { return width == 0; }
};

enum class PictureUse
{
    Preview,   // as large as 2048 pixels a side
    Thumbnail  // at most ThumbnailSide, rather soon than well
};
inline constexpr int ThumbnailSide = 128;

// Starts the program with the first picture and keeps it. One that has ended, answers nonsense or is not done in two seconds is
// ended, and another one started for the next picture. Where there is none no picture is decoded: nothing hostile is ever decoded
// here instead. Any thread; one picture at a time.
class PictureDecoder
{
public:
    // The one that is installed.
    PictureDecoder();
    explicit PictureDecoder(std::filesystem::path program);
    PictureDecoder(const PictureDecoder&) = delete;
    PictureDecoder& operator=(const PictureDecoder&) = delete;
    // Ends the program.
    ~PictureDecoder();

    // Null when it is no picture, or takes more time or memory than it is given.
    DecodedPicture Decode(const std::filesystem::path& file, PictureUse use);
    DecodedPicture Decode(std::span<const std::uint8_t> bytes, PictureUse use);

private:
    DecodedPicture Ask(const FileHandle& picture, PictureUse use);
    bool IsRunning();
    bool Start();
    void Stop();

    const std::filesystem::path m_path;
    std::mutex m_lock;
    std::optional<LaunchedProgram> m_program;
    FileHandle m_channel;
    std::uint32_t m_number = 0;  // of the last request
};
