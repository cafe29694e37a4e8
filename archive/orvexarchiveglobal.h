#pragma once

#include <QtCore/qglobal.h>

#if defined(ORVEXARCHIVE_LIBRARY)
#define ORVEXARCHIVE_EXPORT Q_DECL_EXPORT
#else
#define ORVEXARCHIVE_EXPORT Q_DECL_IMPORT
#endif
