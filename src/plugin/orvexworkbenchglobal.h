#pragma once

#include <QtCore/qglobal.h>

#if defined(ORVEXWORKBENCH_LIBRARY)
#define ORVEXWORKBENCH_EXPORT Q_DECL_EXPORT
#else
#define ORVEXWORKBENCH_EXPORT Q_DECL_IMPORT
#endif

// Reverse-domain prefix shared by every interface identifier of the workbench.
#define ORVEX_IID_PREFIX "de.vantrel."
