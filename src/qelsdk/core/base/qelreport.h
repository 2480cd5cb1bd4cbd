// Report helpers for the library's sources: the function argument is always the
// bare name of the enclosing function, which is what __func__ gives for members and
// templates.
#ifndef QELSDK_CORE_BASE_QELREPORT_H
#define QELSDK_CORE_BASE_QELREPORT_H

#include <qelsdk/core/base/qelassert.h>

#define QEL_REPORT_CONDITION(pFile, pText)                                                         \
    ::qelsdk::_QelAssert(pFile, __func__, __LINE__, false, "%s", pText)
#define QEL_REPORT_MESSAGE(pFile, pText)                                                           \
    ::qelsdk::_QelAssert(pFile, __func__, __LINE__, true, "%s", pText)

#endif
