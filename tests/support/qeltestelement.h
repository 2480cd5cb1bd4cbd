// A layer element kind for tests of the element base and of its containers: it
// counts its destructions and shows the protected fields.
#ifndef QELSDK_TESTS_SUPPORT_QELTESTELEMENT_H
#define QELSDK_TESTS_SUPPORT_QELTESTELEMENT_H

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>

#include <vector>

namespace qelsdk {
namespace test {

class TestElement : public QelLayerElement
{
public:
    // pDestroyed, when given, goes up by one when the element is destroyed.
    explicit TestElement(int* pDestroyed = nullptr) : mDestroyed(pDestroyed) {}
    ~TestElement() override
    {
        if (mDestroyed) ++*mDestroyed;
    }

    const QelDataType* GetDataType() const { return mType; }
    int GetRefCount() const { return mRefCount; }

    // Made the way the factories make elements: allocated, then registered.
    static TestElement* Create(QelLayerContainer* pOwner, int* pDestroyed = nullptr)
    {
        TestElement* lElement = QelNew<TestElement>(pDestroyed);
        if (lElement) lElement->SetOwner(pOwner, 0);
        return lElement;
    }

private:
    int* mDestroyed;
};

// The protected fields of any element, reached through member pointers of the base
// (no element is cast to this class).
struct ElementFields : QelLayerElement
{
    static const QelDataType* TypeOf(const QelLayerElement& pElement)
    {
        return pElement.*(&ElementFields::mType);
    }
    static int RefCountOf(const QelLayerElement& pElement)
    {
        return pElement.*(&ElementFields::mRefCount);
    }
};

using Elements = std::vector<QelLayerElement*>;

// The container's element list, in order.
inline Elements ListOf(const QelLayerContainer& pContainer)
{
    Elements lElements;
    for (int i = 0; i < pContainer.GetLayerElementCount(); ++i)
        lElements.push_back(pContainer.GetLayerElement(i));
    return lElements;
}

} // namespace test
} // namespace qelsdk

#endif
