#include <qelsdk/core/qelpropertytypes.h>

#include "qelsdk/core/qelvaluetypes.h"

namespace qelsdk {

int QelTypeSizeOf(EQelType pType) { return internal::QelFactsOfTag(pType).mSize; }

} // namespace qelsdk
