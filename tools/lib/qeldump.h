// Decoding of a layer content stream (the bytes QelLayer::ContentWriteTo writes) into
// readable lines: one line per record, then for each present element its arrays (count,
// item type and the first items), its modes by name and its name.
//
// The decoder reads only the buffer it is given and allocates nothing sized from it:
// every field is checked against the bytes left before it is read, so truncated or
// arbitrary bytes end the dump with the offset of the first field that does not hold.
#ifndef QELSDK_TOOLS_QELDUMP_H
#define QELSDK_TOOLS_QELDUMP_H

#include <cstddef>
#include <cstdio>
#include <string>

namespace qelsdk {

// Where the dump stopped: on success the buffer's size; otherwise the offset of the
// field that breaks and what is wrong with it.
struct QelDumpResult
{
    bool mOk;
    std::size_t mOffset;
    std::string mMessage;
};

// At most this many items of each array are printed; a count says how many follow.
constexpr int sQelDumpShownItems = 4;

// Dumps pSize bytes at pData. The lines of the records decoded before a break are
// written all the same. pOut may be null to check a buffer without printing it.
QelDumpResult QelDumpLayerStream(const void* pData, std::size_t pSize, std::FILE* pOut);
QelDumpResult QelDumpLayerStream(const void* pData, std::size_t pSize, std::string& pOut);

} // namespace qelsdk

#endif
