#include "app/preview/PreviewWnd.h"

#include <utility>

CPreviewWnd::CPreviewWnd() : CPopUpWnd(QStringLiteral("PreviewWnd.xml")) {}

CPreviewWnd::~CPreviewWnd() = default;

std::filesystem::path CPreviewWnd::TakeTempPath()
{
    return std::exchange(data.tempPath, {});
}
