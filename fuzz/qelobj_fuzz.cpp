// The OBJ reader on arbitrary bytes, into a fresh scene. A refusal is one line of
// error; what the reader accepts is written back as OBJ text, and that text must read
// back into a mesh with the same control points and polygons.
#include "qelfuzzsupport.h"
#include "qelobj.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace qelsdk;

namespace {

// The reader's messages name the file; the name locates no material library.
constexpr const char* sFileName = "fuzz.obj";

void Check(bool pCondition)
{
    if (!pCondition) __builtin_trap();
}

bool IsOneLine(const std::string& pText)
{
    return !pText.empty() && pText.find('\n') == std::string::npos;
}

// Writes the scene's mesh and layer as OBJ text and reads that text into a scene of
// its own, which must hold as many control points and polygons.
void WriteAndReadBack(QelObjScene& pScene)
{
    const QelLayer* lLayer = pScene.Layer();
    Check(lLayer != nullptr);
    std::string lText;
    std::string lError;
    Check(QelObjWrite(pScene.Mesh(), *lLayer, lText, lError));
    QelObjScene lAgain;
    const QelObjResult lResult = QelObjRead(lText.data(), lText.size(), sFileName, lAgain);
    Check(lResult.mSuccess);
    Check(lAgain.Mesh().GetControlPointsCount() == pScene.Mesh().GetControlPointsCount());
    Check(lAgain.Mesh().GetPolygonCount() == pScene.Mesh().GetPolygonCount());
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return fuzz::QelInstallFuzzHandlers(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    if (pSize > (size_t(1) << 20)) return 0;
    QelObjScene lScene;
    const QelObjResult lResult =
        QelObjRead(reinterpret_cast<const char*>(pData), pSize, sFileName, lScene);
    for (const std::string& lWarning : lResult.mWarnings)
        Check(IsOneLine(lWarning));
    if (!lResult.mSuccess) {
        Check(IsOneLine(lResult.mError));
        return 0;
    }
    Check(lResult.mError.empty());
    WriteAndReadBack(lScene);
    return 0;
}
