#include <qelsdk/scene/qelnode.h>

namespace qelsdk {

QelNode::QelNode(const char* pName) : QelObject(pName) {}

// Out of line so that the class has one home for its virtual table.
QelNode::~QelNode() = default;

} // namespace qelsdk
