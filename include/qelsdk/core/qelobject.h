// QelObject: a named object of the scene with ordered, two-ended connections.
//
// Every connection is recorded at both ends: the destination lists the source
// among its sources and the source lists the destination among its destinations,
// each list in connection order. The two lists are only ever changed together, so
// looking at one end is enough to know whether two objects are connected.
#ifndef QELSDK_CORE_QELOBJECT_H
#define QELSDK_CORE_QELOBJECT_H

#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/qelstring.h>

#include <type_traits>

namespace qelsdk {

struct QelConnection
{
    enum EType { eNone = 0 };
};

class QelObject
{
public:
    explicit QelObject(const char* pName = "");
    // Disconnects from every source and destination, unless wipe mode is set.
    virtual ~QelObject();

    // Connections name objects by address; a copy could not take them over.
    QelObject(const QelObject&) = delete;
    QelObject& operator=(const QelObject&) = delete;

    const char* GetName() const { return mName.Buffer(); }
    // Keeps the old name when the new text cannot be allocated.
    void SetName(const char* pName) { mName = pName; }

    // Run-time class test: true when this object is a T or derives from it.
    template <class T> bool Is() const
    {
        // Every object is one of its own bases; only derived classes need a look.
        if constexpr (std::is_base_of<T, QelObject>::value)
            return true;
        else
            return dynamic_cast<const T*>(this) != nullptr;
    }

    // Both make pObject the last source of this object and this object the last
    // destination of pObject (or the reverse for ConnectDstObject). False, with
    // nothing changed, for a null object, this object itself, an object already
    // connected that way, or when either list cannot grow. The type is recorded
    // nowhere: every connection of the library is of the plain kind.
    bool ConnectSrcObject(QelObject* pObject, QelConnection::EType pType = QelConnection::eNone);
    bool ConnectDstObject(QelObject* pObject, QelConnection::EType pType = QelConnection::eNone);

    // Remove the connection at both ends; false when there was none.
    bool DisconnectSrcObject(QelObject* pObject);
    bool DisconnectDstObject(QelObject* pObject);

    bool IsConnectedSrcObject(const QelObject* pObject) const;
    bool IsConnectedDstObject(const QelObject* pObject) const;

    // Counts and accessors over the connected objects that are a T, in connection
    // order; GetSrcObject<T>(i) is the i-th source that is a T, null out of range.
    template <class T> int GetSrcObjectCount() const { return CountOf<T>(mSources); }
    template <class T> T* GetSrcObject(int pIndex) const { return NthOf<T>(mSources, pIndex); }
    template <class T> int GetDstObjectCount() const { return CountOf<T>(mDestinations); }
    template <class T> T* GetDstObject(int pIndex) const { return NthOf<T>(mDestinations, pIndex); }

    // Disconnects every source that is a T; true when at least one was connected.
    template <class T> bool DisconnectAllSrcObject()
    {
        bool lDisconnected = false;
        // From the back, so that a removal never shifts a source still to be seen.
        for (int i = mSources.Size() - 1; i >= 0; --i)
            if (mSources[i]->Is<T>())
                lDisconnected = DisconnectSrcObject(mSources[i]) || lDisconnected;
        return lDisconnected;
    }

    // Wipe mode is set by whoever tears a whole scene down: while it is set, a
    // destroyed object leaves its connections alone instead of disconnecting, since
    // every object it is connected to is going away as well. Connections to an
    // object destroyed in wipe mode dangle; only destroying the rest is then safe.
    static bool GetWipeMode();
    static void SetWipeMode(bool pWipeMode);

private:
    static bool Link(QelObject* pSource, QelObject* pDestination);
    static bool Unlink(QelObject* pSource, QelObject* pDestination);
    static bool Contains(const QelArray<QelObject*>& pList, const QelObject* pObject);

    template <class T> static int CountOf(const QelArray<QelObject*>& pList)
    {
        int lCount = 0;
        for (int i = 0; i < pList.Size(); ++i)
            if (pList[i]->Is<T>()) ++lCount;
        return lCount;
    }

    template <class T> static T* NthOf(const QelArray<QelObject*>& pList, int pIndex)
    {
        for (int i = 0; i < pList.Size(); ++i) {
            T* lObject = dynamic_cast<T*>(pList[i]);
            if (lObject && pIndex-- == 0) return lObject;
        }
        return nullptr;
    }

    QelString mName;
    QelArray<QelObject*> mSources;
    QelArray<QelObject*> mDestinations;
};

// pObject as a T; null when pObject is null or not a T.
template <class T> T* QelCast(QelObject* pObject) { return dynamic_cast<T*>(pObject); }

} // namespace qelsdk

#endif
