// Declarations of the vector templates and their aliases, for headers that name the
// types without using their members.
#ifndef QELSDK_CORE_QELVECTORFWD_H
#define QELSDK_CORE_QELVECTORFWD_H

namespace qelsdk {

template <class T> class QelVectorTemplate2;
template <class T> class QelVectorTemplate3;
template <class T> class QelVectorTemplate4;

typedef QelVectorTemplate2<double> QelDouble2;
typedef QelVectorTemplate3<double> QelDouble3;
typedef QelVectorTemplate4<double> QelDouble4;
typedef QelVectorTemplate4<QelVectorTemplate4<double>> QelDouble4x4;
typedef QelDouble2 QelVector2;
typedef QelDouble4 QelVector4;

} // namespace qelsdk

#endif
