// Element utilities: reshape the values of a layer element and compute normals.
//
// The templates are instantiated in the library for the nine item types of the
// kinds: QelVector4, QelVector2, QelColor, int, double, bool, QelSurfaceMaterial*,
// QelTexture* and void*.
//
// Free functions built on the public operations of elements, arrays and meshes. Each
// validates first and changes nothing when it refuses: the status tells why. An
// allocation that fails leaves the element (and the mesh) as it was and gives
// eQelUtilOutOfMemory; the one exception is a layer that QelComputeNormals creates,
// which stays (empty) when a later allocation fails. Refusals are answers, not misuse:
// none is reported through _QelAssert, apart from the report a library array makes of
// its own failed growth.
//
// The reference modes handled are eDirect and eIndexToDirect; an element in eIndex
// mode has no direct values to work on and is refused with eQelUtilBadReferenceMode.
// An array that is locked when the function starts (a read or write lock, or a buffer
// handed out by GetLocked) gives eQelUtilLocked.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYERUTILS_H
#define QELSDK_SCENE_GEOMETRY_QELLAYERUTILS_H

#include <qelsdk/scene/geometry/qellayerelement.h>

namespace qelsdk {

class QelMesh;

enum EQelLayerUtilStatus : int {
    eQelUtilOk = 0,           // done, or nothing to do
    eQelUtilBadReferenceMode, // the element's reference mode does not allow the operation
    eQelUtilIndexOutOfRange,  // an index names no item (element index or mesh vertex)
    eQelUtilLocked,           // an array of the element is locked
    eQelUtilOutOfMemory,      // an allocation failed; nothing changed
    eQelUtilBadMappingMode,   // a mapping mode outside the ones the operation handles
    eQelUtilCountMismatch,    // the item count does not fit the mesh for the mapping
    eQelUtilUnsupportedKind,  // the element's items cannot be merged or copied here
    eQelUtilBadTolerance,     // negative or NaN, or not zero for a kind without floats
    eQelUtilBadLayer          // a layer index that names no layer and no new one
};

// Makes an eIndexToDirect element eDirect: item k of the new direct array is the
// old direct item that index k names, the index array is emptied and the reference
// mode becomes eDirect. The mapping mode stays. An eDirect element is already flat:
// eQelUtilOk with nothing changed.
// Failure values: eQelUtilBadReferenceMode (eIndex), eQelUtilIndexOutOfRange (an
// index below 0 or past the direct items), eQelUtilLocked, eQelUtilOutOfMemory,
// eQelUtilUnsupportedKind (user data, whose direct items are channel arrays the
// element owns: copying them would free them twice).
template <class T> EQelLayerUtilStatus QelFlatten(QelLayerElementTemplate<T>& pElement);

// Makes an eDirect element eIndexToDirect, equal items shared: the direct array
// keeps the first item of each class of equal items, in order of first appearance,
// and index k names the class of old item k. Welding a flattened element whose
// direct items were all distinct therefore gives back its original arrays.
//
// pTolerance 0 compares bytes: -0.0 and 0.0 stay apart and NaNs of the same bits
// weld, so that no welded value differs in a single bit from the items it stands for.
// A positive pTolerance, for the kinds of floating-point items (QelVector4,
// QelVector2, QelColor, double), merges items whose components all differ by at most
// pTolerance: each item, in order, joins the earliest kept item within the tolerance
// of it, or is kept itself. The kept items lie on a grid of cell size pTolerance (at
// most one per cell), and only the neighbouring cells are searched. The relation is
// not transitive: a and b, b and c may be within tolerance while a and c are not, and
// which items merge then depends on their order. An item with a component that is not
// finite, or beyond 2^52 cells from 0, is welded by its bytes.
// Failure values: eQelUtilBadReferenceMode (anything but eDirect: flatten an
// eIndexToDirect element first), eQelUtilBadTolerance (negative, NaN, or positive for
// int, bool and pointer items), eQelUtilLocked, eQelUtilOutOfMemory,
// eQelUtilUnsupportedKind (user data, as for QelFlatten).
template <class T>
EQelLayerUtilStatus QelWeld(QelLayerElementTemplate<T>& pElement, double pTolerance = 0.0);

// Changes the mapping among eByControlPoint, ePerPolygonVertex, ePerPolygon and
// eAllSame. The element's item count (the index count for eIndexToDirect, else the
// direct count) must match its current mapping on pMesh: the control point count,
// the polygon vertex count, the polygon count, or 1 for eAllSame.
//
// Each new item gathers the old items that fall on it: a polygon vertex takes its
// control point's or its polygon's item (widening: a copy), a control point takes the
// items of every polygon vertex on it, a polygon those of its vertices, eAllSame all
// items. An item fed by one old item is a copy of it. Otherwise QelVector4 items
// (normals, binormals, tangents) are averaged and their first three components
// scaled to length 1 (a zero average stays zero), QelVector2, QelColor and double
// items are averaged, int items take the most frequent value and bool items the
// majority, ties going to the smallest value (false). A new item fed by nothing (a
// control point no polygon uses) is zero.
//
// The element comes out eDirect with an empty index array whatever its reference mode
// was: an eIndexToDirect element is read through its indices. Equal modes: eQelUtilOk,
// nothing changed.
// Failure values: eQelUtilBadMappingMode (either mode outside the four),
// eQelUtilCountMismatch, eQelUtilIndexOutOfRange (an element index, or a mesh vertex
// index past the control points when control points are involved),
// eQelUtilUnsupportedKind (materials, textures and user data: pointers are neither
// averaged nor voted on), eQelUtilBadReferenceMode, eQelUtilLocked,
// eQelUtilOutOfMemory.
template <class T>
EQelLayerUtilStatus QelChangeMapping(QelLayerElementTemplate<T>& pElement, const QelMesh& pMesh,
                                     QelLayerElement::EMappingMode pMapping);

// Computes unit normals of pMesh into the normal element of layer pLayerIndex, with
// mapping pMapping: eByControlPoint (one per control point) or ePerPolygonVertex.
//
// A polygon's normal follows its vertex order (counter-clockwise seen from the front)
// by Newell's method, which also serves polygons that are not planar. Polygons with
// fewer than three vertices, or whose doubled area (the length of Newell's sum) is at
// most 1e-10 of the summed squares of their edge lengths, are degenerate and skipped. A vertex
// normal is the sum of the normals of the polygons around it, each weighted by the polygon's angle
// at the vertex, scaled to length 1; a vertex no polygon contributes to gets a zero normal. The
// fourth component is 0.
//
// ePerPolygonVertex follows the smoothing element of the same layer when it is mapped
// ePerPolygon (direct or through its indices): polygons of the same non-zero group
// share normals at their common control points, polygons of different groups do not,
// and a polygon of group 0 is hard: its vertices get its own normal (zero when it is
// degenerate). A smoothing element with another mapping is ignored, as is smoothing
// for eByControlPoint. Without one, the mesh is smooth everywhere.
//
// pLayerIndex names an existing layer or the next one (the layer count), which is then
// created. The layer's normal element, when there is one, keeps its identity and its
// content is replaced (eDirect, the new mapping, the new items, no indices); otherwise
// a normal element is created and set on the layer.
// Failure values: eQelUtilBadMappingMode, eQelUtilBadLayer, eQelUtilIndexOutOfRange (a
// polygon vertex past the control points, or a by-polygon smoothing index past its
// direct items), eQelUtilCountMismatch (a by-polygon smoothing element whose item
// count is not the polygon count), eQelUtilBadReferenceMode (a by-polygon smoothing
// element in eIndex mode), eQelUtilLocked (the normal or smoothing element is locked),
// eQelUtilOutOfMemory.
EQelLayerUtilStatus QelComputeNormals(QelMesh& pMesh, int pLayerIndex,
                                      QelLayerElement::EMappingMode pMapping);

} // namespace qelsdk

#endif
