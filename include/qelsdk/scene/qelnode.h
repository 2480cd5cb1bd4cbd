// QelNode: a node of the scene graph. A node instantiates the geometry it holds as a
// source (node.ConnectSrcObject(&mesh)); its materials are its QelSurfaceMaterial sources.
#ifndef QELSDK_SCENE_QELNODE_H
#define QELSDK_SCENE_QELNODE_H

#include <qelsdk/core/qelobject.h>

namespace qelsdk {

class QelNode : public QelObject
{
public:
    explicit QelNode(const char* pName = "");
    ~QelNode() override;
};

} // namespace qelsdk

#endif
