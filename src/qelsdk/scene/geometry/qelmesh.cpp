#include <qelsdk/scene/geometry/qelmesh.h>

#include <climits>

namespace qelsdk {

QelMesh::QelMesh(const char* pName) : QelLayerContainer(pName) {}

QelMesh::~QelMesh() = default;

void QelMesh::SetControlPointCount(int pCount)
{
    if (pCount >= 0) mControlPoints.Resize(pCount);
}

void QelMesh::SetControlPointAt(const QelVector4& pPoint, int pIndex)
{
    if (pIndex >= 0 && pIndex < mControlPoints.Size()) mControlPoints[pIndex] = pPoint;
}

QelVector4 QelMesh::GetControlPointAt(int pIndex) const
{
    if (pIndex < 0 || pIndex >= mControlPoints.Size()) return QelVector4();
    return mControlPoints[pIndex];
}

int QelMesh::AddPolygon(const int* pVertices, int pSize)
{
    if (!pVertices || pSize < 1 || !ReserveVertices(pSize)) return -1;
    const int lPolygon = mPolygons.Add(PolygonDef{mPolygonVertices.Size(), pSize});
    if (lPolygon < 0) return -1;
    // Cannot fail: the room was reserved above.
    for (int i = 0; i < pSize; ++i)
        mPolygonVertices.Add(pVertices[i]);
    return lPolygon;
}

int QelMesh::GetPolygonSize(int pPolygon) const
{
    if (pPolygon < 0 || pPolygon >= mPolygons.Size()) return -1;
    return mPolygons[pPolygon].mSize;
}

int QelMesh::GetPolygonVertex(int pPolygon, int pPosition) const
{
    if (pPosition < 0 || pPosition >= GetPolygonSize(pPolygon)) return -1;
    return mPolygonVertices[mPolygons[pPolygon].mIndex + pPosition];
}

// Room for pCount more vertex indices, at least doubling so that adding polygon
// after polygon stays amortised. Reserving may leave spare room behind when the
// polygon list then fails to grow, but never changes an item.
bool QelMesh::ReserveVertices(int pCount)
{
    const int lSize = mPolygonVertices.Size();
    if (pCount > INT_MAX - lSize) return false;
    const int lCapacity = mPolygonVertices.GetCapacity();
    if (lSize + pCount <= lCapacity) return true;
    const int lDoubled = lCapacity > INT_MAX / 2 ? INT_MAX : lCapacity * 2;
    return mPolygonVertices.Reserve(QelMax(lSize + pCount, lDoubled));
}

} // namespace qelsdk
