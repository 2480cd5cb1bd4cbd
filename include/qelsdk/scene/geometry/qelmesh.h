// QelMesh: a polygon mesh, a layer container whose layers hold the attributes of
// its control points and polygons.
//
// Polygons are kept as one run of vertex indices: polygon i is mPolygons[i].mSize
// indices starting at mPolygons[i].mIndex of mPolygonVertices. Vertex indices are
// not checked against the control points, which may be set before or after.
#ifndef QELSDK_SCENE_GEOMETRY_QELMESH_H
#define QELSDK_SCENE_GEOMETRY_QELMESH_H

#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/qelvector.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>

namespace qelsdk {

class QelMesh : public QelLayerContainer
{
public:
    struct PolygonDef
    {
        int mIndex; // first vertex in the vertex index array
        int mSize;  // number of vertices
    };

    explicit QelMesh(const char* pName = "");
    ~QelMesh() override;

    // New points are zero. A negative count, or a count that cannot be allocated,
    // leaves the points as they were.
    void SetControlPointCount(int pCount);
    int GetControlPointsCount() const { return mControlPoints.Size(); }
    // Out of range: ignored, and a zero vector.
    void SetControlPointAt(const QelVector4& pPoint, int pIndex);
    QelVector4 GetControlPointAt(int pIndex) const;

    // The index of the new polygon; -1, with nothing changed, when pSize < 1,
    // pVertices is null or the arrays cannot grow.
    int AddPolygon(const int* pVertices, int pSize);
    int GetPolygonCount() const { return mPolygons.Size(); }
    // The getters answer -1 out of range rather than report: the layer code asks
    // about polygons past the end on purpose.
    int GetPolygonSize(int pPolygon) const;
    int GetPolygonVertex(int pPolygon, int pPosition) const;
    int GetPolygonVertexCount() const { return mPolygonVertices.Size(); }

private:
    bool ReserveVertices(int pCount);

    QelArray<QelVector4> mControlPoints;
    QelArray<PolygonDef> mPolygons;
    QelArray<int> mPolygonVertices;
};

} // namespace qelsdk

#endif
