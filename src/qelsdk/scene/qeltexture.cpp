#include <qelsdk/scene/qeltexture.h>

namespace qelsdk {

QelTexture::QelTexture(const char* pName) : QelObject(pName) {}

// Out of line so that the class has one home for its virtual table.
QelTexture::~QelTexture() = default;

} // namespace qelsdk
