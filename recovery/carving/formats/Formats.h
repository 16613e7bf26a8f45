// The detect and length functions of all formats, in the order of the signature table.
#pragma once

#include "recovery/carving/SignatureTable.h"

#include <cstdint>

FileTypeId DetectMpeg(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthMpeg(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMp4(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthMp4(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectRm(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthRm(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectAsf(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthAsf(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectSwf(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthSwf(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectAvi(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthAvi(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectFlv(const std::uint8_t* buffer, std::int32_t size);
FileTypeId Detect3gp(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMkv(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthMkv(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectTs(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthTs(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMts(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMxf(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMp3(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthMp3(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMidi(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthMidi(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectApe(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthApe(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectWav(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthWav(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMov(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMp2(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectMmf(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectFla(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectGif(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthGif(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectBmp(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthBmp(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectJpeg(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthJpeg(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectPng(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthPng(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectPsd(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectTiff(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectIco(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthIco(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectOle2(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectOoxml(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectPdf(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectGzip(const std::uint8_t* buffer, std::int32_t size);
FileTypeId Detect7z(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectZip(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectRar(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectCab(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectPe(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectGho(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectSqlite(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectDbx(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectPst(const std::uint8_t* buffer, std::int32_t size);
FileTypeId DetectTtf(const std::uint8_t* buffer, std::int32_t size);

// No end of their own: to the next head or metadata sector, or until the budget is spent.
std::int64_t LengthBounded64M(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthScanOnly128M(const std::uint8_t* buffer, std::int32_t size);
std::int64_t LengthBounded4G(const std::uint8_t* buffer, std::int32_t size);
