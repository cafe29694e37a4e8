#pragma once

#include <QtCore/qglobal.h>

#if defined(ORVEXWORKBENCH_LIBRARY)
#define ORVEXWORKBENCH_EXPORT Q_DECL_EXPORT
#else
#define ORVEXWORKBENCH_EXPORT Q_DECL_IMPORT
#endif
