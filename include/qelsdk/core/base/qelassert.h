// Assertion reporting: every failed precondition and every misuse message of the
// library goes through _QelAssert, which hands it to a replaceable procedure and
// then returns to the caller. Whether the operation then refuses or goes on is
// decided by the caller, never by the reporter.
#ifndef QELSDK_CORE_BASE_QELASSERT_H
#define QELSDK_CORE_BASE_QELASSERT_H

namespace qelsdk {

// pIsMessage is false when pMessage is the text of a failed condition
// ("pIndex >= 0") and true when it is a message ("Incompatible type assignment!").
typedef void (*QelAssertProc)(const char* pFile, const char* pFunction, unsigned int pLine,
                              bool pIsMessage, const char* pMessage);

// Installs pProc and returns the previous procedure; nullptr restores the default,
// which writes one line to standard error.
QelAssertProc QelSetAssertProc(QelAssertProc pProc);

// Formats the message printf-style and hands it to the installed procedure.
void _QelAssert(const char* pFile, const char* pFunction, unsigned int pLine, bool pIsMessage,
                const char* pFormat, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 5, 6)))
#endif
    ;

} // namespace qelsdk

#endif
