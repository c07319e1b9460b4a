#include "entry.h"
#include "records.h"

namespace zipformat {
namespace {

// Host systems whose external attributes hold DOS attributes: FAT, OS/2 HPFS, NTFS, VFAT.
bool KeepsDosAttributes(std::uint16_t madeBy) noexcept {
    const unsigned host = madeBy >> 8;
    return host == 0 || host == 6 || host == 10 || host == 11 || host == 14;
}

} // namespace

bool Entry::IsFolder() const noexcept {
    if (!name.empty() && (name.back() == '/' || name.back() == '\\')) return true;
    return KeepsDosAttributes(madeBy) && (externalAttributes & kDosFolder) && size == 0;
}

bool Entry::IsEncrypted() const noexcept { return (flags & (kFlagEncrypted | kFlagStrongEncryption)) != 0; }

std::uint32_t Entry::DosAttributes() const noexcept {
    std::uint32_t attributes = KeepsDosAttributes(madeBy) ? externalAttributes & 0x37 : 0;
    if (IsFolder()) attributes |= kDosFolder;
    return attributes;
}

} // namespace zipformat
