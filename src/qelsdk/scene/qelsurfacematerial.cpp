#include <qelsdk/scene/qelsurfacematerial.h>

namespace qelsdk {

QelSurfaceMaterial::QelSurfaceMaterial(const char* pName) : QelObject(pName) {}

// Out of line so that the class has one home for its virtual table.
QelSurfaceMaterial::~QelSurfaceMaterial() = default;

} // namespace qelsdk
