// Umbrella header: every public declaration of the library.
#ifndef QELSDK_QELSDK_H
#define QELSDK_QELSDK_H

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/base/qelassert.h>
#include <qelsdk/core/base/qelredblacktree.h>
#include <qelsdk/core/qelblob.h>
#include <qelsdk/core/qelcolor.h>
#include <qelsdk/core/qeldatatype.h>
#include <qelsdk/core/qeldatetime.h>
#include <qelsdk/core/qeldistance.h>
#include <qelsdk/core/qelhalffloat.h>
#include <qelsdk/core/qelobject.h>
#include <qelsdk/core/qelpropertytypes.h>
#include <qelsdk/core/qelstream.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltime.h>
#include <qelsdk/core/qeltypecopy.h>
#include <qelsdk/core/qeltypetable.h>
#include <qelsdk/core/qelvector.h>
#include <qelsdk/core/qelvectorfwd.h>
#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>
#include <qelsdk/scene/geometry/qellayerelementarray.h>
#include <qelsdk/scene/geometry/qellayerutils.h>
#include <qelsdk/scene/geometry/qelmesh.h>
#include <qelsdk/scene/qelnode.h>
#include <qelsdk/scene/qelsurfacematerial.h>
#include <qelsdk/scene/qeltexture.h>

#endif
