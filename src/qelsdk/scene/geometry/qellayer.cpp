#include <qelsdk/scene/geometry/qellayer.h>

namespace qelsdk {

QelLayer::QelLayer(QelLayerContainer& pOwner) : mOwnerContainer(pOwner) {}

QelLayer::~QelLayer() = default;

} // namespace qelsdk
