// Wavefront OBJ import and export for one mesh layer.
//
// The reader turns the text of an OBJ file into a QelObjScene: the mesh's control
// points and polygons, the materials of the node that instances the mesh, and the
// elements of the mesh's first layer. The writer turns a mesh and one of its layers
// back into OBJ text that the reader turns into the same elements.
//
// What the reader makes of the statements:
// - v (x y z, a fourth value and vertex colours are ignored) -> control points;
// - vt (u [v [w]]) and vn (x y z) -> the direct arrays of a diffuse UV element and a
//   normal element, per polygon vertex, index to direct, with the face's indices as
//   the index array; a file with no vt or no vn has no such element, and once one
//   face vertex names a vt (vn), every face vertex must;
// - f with v, v/vt, v//vn or v/vt/vn corners, 1-based or negative (relative to the
//   end of the list so far), at least 3 corners -> a polygon;
// - usemtl NAME -> a material of the node per distinct name, in the order faces
//   first use them, and a per-polygon, index-to-direct material element; faces
//   before the first usemtl use a material named "default";
// - g NAME / o NAME -> a per-polygon, direct polygon group element numbering the
//   names in the order faces first use them ("default" before the first g or o);
// - s N / s off / s 0 -> a per-polygon, direct smoothing element (0 for off and
//   for faces before the first s);
// - mtllib NAME -> a warning when NAME is not found beside the file; the library is
//   not read, since the materials carry no property the layer needs;
// - anything else is skipped and counted.
// Elements exist only for what the file has: no usemtl, no material element.
#ifndef QELSDK_TOOLS_QELOBJ_H
#define QELSDK_TOOLS_QELOBJ_H

#include <qelsdk/qelsdk.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace qelsdk {

// A mesh, the node that instances it (its first source) and the materials and
// textures the node and the layer use, owned here. The node goes first at
// destruction, so that it lets go of the mesh and the materials while they live.
class QelObjScene
{
public:
    explicit QelObjScene(const char* pName = "mesh");
    QelObjScene(const QelObjScene&) = delete;
    QelObjScene& operator=(const QelObjScene&) = delete;

    // A new material connected to the node after its other materials.
    QelSurfaceMaterial* AddMaterial(const char* pName);
    // A new texture, owned by the scene and connected to nothing.
    QelTexture* AddTexture(const char* pName);
    int GetMaterialCount() const { return static_cast<int>(mMaterials.size()); }
    QelSurfaceMaterial* GetMaterial(int pIndex) const { return mMaterials[pIndex].get(); }

    QelMesh& Mesh() { return mMesh; }
    const QelMesh& Mesh() const { return mMesh; }
    QelNode& Node() { return mNode; }
    // The mesh's first layer, created on first use; null when it cannot be.
    QelLayer* Layer();

private:
    std::vector<std::unique_ptr<QelSurfaceMaterial>> mMaterials;
    std::vector<std::unique_ptr<QelTexture>> mTextures;
    QelMesh mMesh;
    QelNode mNode;
};

// The outcome of an import. On failure mError is one line, "FILE:LINE: text" (or
// "FILE: text" for what concerns the whole file). The whole text is parsed before
// anything goes into the scene, so malformed input leaves the scene untouched; only
// running out of memory while filling it ("FILE: out of memory") leaves it partial.
struct QelObjResult
{
    bool mSuccess = false;
    std::string mError;
    // Statements the reader does not use (l, p, vp, ...), counted and skipped.
    int mSkippedStatements = 0;
    // One line per warning, "FILE:LINE: text".
    std::vector<std::string> mWarnings;

    int GetWarningCount() const { return static_cast<int>(mWarnings.size()); }
};

// Reads pSize bytes of OBJ text into pScene, which should be fresh: its mesh gets
// the points and polygons, its node the materials, its first layer the elements.
// pFileName names the file in messages and locates mtllib files. Any bytes are
// safe: the reader allocates only for what it has parsed.
QelObjResult QelObjRead(const char* pData, size_t pSize, const char* pFileName,
                        QelObjScene& pScene);
// Reads the file into memory and calls QelObjRead.
QelObjResult QelObjReadFile(const char* pPath, QelObjScene& pScene);

// The OBJ text of pMesh with the elements of pLayer: v per control point, vt and vn
// per item of the diffuse UV and normal direct arrays, one f per polygon with the
// index form the elements call for, usemtl runs from the material element (the
// materials' names), g runs from the polygon groups ("g groupN") and s runs from
// the smoothing ("s off" for 0). UVs and normals are written when mapped per
// polygon vertex or by control point, direct or index to direct; materials, groups
// and smoothing when mapped per polygon or all same. Other mappings are left out.
// False, with pError set, when an element does not fit the mesh (an index beyond its
// direct array, fewer items than the polygons need).
bool QelObjWrite(const QelMesh& pMesh, const QelLayer& pLayer, std::string& pText,
                 std::string& pError);
// Writes the text to a temporary file beside pPath and renames it to pPath; on
// failure nothing is left and pError is "PATH: text".
bool QelObjWriteFile(const QelMesh& pMesh, const QelLayer& pLayer, const char* pPath,
                     std::string& pError);

// Writes pSize bytes to pPath through a temporary name beside it, renamed on
// success and removed on failure. pError is "PATH: text" on failure.
bool QelWriteFileAtomically(const char* pPath, const void* pData, size_t pSize,
                            std::string& pError);

} // namespace qelsdk

#endif
