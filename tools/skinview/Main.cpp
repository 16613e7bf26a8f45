#include "ui/package/SkinPackage.h"

int main()
{
    return SkinPackage::Embedded()->Read(QStringLiteral("xml/LikeItWnd.xml")) ? 0 : 1;
}
