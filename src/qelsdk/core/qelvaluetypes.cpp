#include "qelsdk/core/qelvaluetypes.h"

namespace qelsdk {
namespace internal {
namespace {

// Applies an operation that may be absent.
void QelApply(QelValuesOperation pOperation, void* pItems, int pCount)
{
    if (pOperation) pOperation(pItems, pCount);
}

} // namespace

bool QelTypeOwnsMemory(EQelType pType) { return QelFactsOfTag(pType).mDestroy != nullptr; }

void QelConstructValues(EQelType pType, void* pItems, int pCount)
{
    QelApply(QelFactsOfTag(pType).mConstruct, pItems, pCount);
}

void QelDestroyValues(EQelType pType, void* pItems, int pCount)
{
    QelApply(QelFactsOfTag(pType).mDestroy, pItems, pCount);
}

} // namespace internal
} // namespace qelsdk
