// The steps of qellayer-demo: the default cube, the element table, and the round trip
// of a layer through its content stream.
//
// The content stream carries material and texture items as addresses, which mean
// something only in the process that wrote them. The read-back therefore happens in
// the same process, into a fresh mesh instanced by a fresh node: reading the material
// element connects that node to the very materials of the original, and the check
// compares material and texture items by address against the original's.
#ifndef QELSDK_TOOLS_QELDEMO_H
#define QELSDK_TOOLS_QELDEMO_H

#include "qelobj.h"

#include <string>
#include <vector>

namespace qelsdk {

// Fills pScene with the default cube: 8 control points, 6 quads, two materials
// ("red" and "blue") on the node, a "checker" texture, and one layer with normals
// (per polygon vertex, direct), a diffuse UV set (per polygon vertex, index to
// direct), vertex colours (by control point, direct), smoothing, polygon groups and
// a material element (per polygon; materials index to direct), edge creases and
// visibility (by edge, direct) and a diffuse texture element (all same, index to
// direct). False when the library refuses a step (out of memory).
bool QelDemoBuildCube(QelObjScene& pScene);

// The kind of element pType (1 to 30), in words: "normals", "uv diffuse", ...
const char* QelDemoKindName(QelLayerElement::EType pType, bool pIsUV);

// One row per element of the layer, in slot order, under a header: kind, name,
// mapping, reference, direct and index counts and memory (MemorySize) in bytes,
// aligned in columns. Each line ends with a newline.
std::string QelDemoElementTable(const QelLayer& pLayer);

// The number of elements the layer holds (each slot counted once).
int QelDemoElementCount(const QelLayer& pLayer);

// Compares every slot of two layers: presence, modes, name, and the direct and
// index arrays item by item. Materials and textures are compared by address when
// pByAddress, else by name. One line per difference goes to pDifferences; true
// when there is none.
bool QelDemoCompareLayers(const QelLayer& pExpected, const QelLayer& pActual, bool pByAddress,
                          std::vector<std::string>& pDifferences);

// The outcome of QelDemoRoundTrip.
struct QelDemoRoundTripResult
{
    bool mSuccess = false; // written, read back and equal
    int mBytes = 0;        // the size of the content stream
    std::string mError;    // "PATH: text" when writing or reading failed
    std::vector<std::string> mDifferences;
};

// Writes the content of pSource's layer to pPath (through a temporary name), then
// gives pReadBack pSource's control points and polygons and reads the file into its
// first layer, and compares the two layers by address. pReadBack must be fresh.
QelDemoRoundTripResult QelDemoRoundTrip(QelObjScene& pSource, const char* pPath,
                                        QelObjScene& pReadBack);

} // namespace qelsdk

#endif
