#include "recovery/metadata/NtfsFileName.h"

#include "platform/Text.h"

namespace {

std::size_t NameUnits(ByteView attribute)
{
    return attribute.U8(88);
}

}  // namespace

NtfsFileNameFields ReadFileNameFields(ByteView attribute)
{
    NtfsFileNameFields fields;
    fields.creationTime = attribute.U64(32);
    fields.writeTime = attribute.U64(40);
    fields.accessTime = attribute.U64(56);
    fields.realSize = attribute.U64(72);
    return fields;
}

bool HasWholeName(ByteView attribute)
{
    return attribute.Covers(FileNameHeadBytes, 2 * NameUnits(attribute));
}

std::string NameOfFileName(ByteView attribute)
{
    std::u16string units(NameUnits(attribute), u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = attribute.U16(FileNameHeadBytes + 2 * i);
    }
    return Utf16ToUtf8(UntilZero(units));
}
