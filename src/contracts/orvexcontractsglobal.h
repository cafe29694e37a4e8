#pragma once

#include <QtCore/qglobal.h>

#if defined(ORVEXCONTRACTS_LIBRARY)
#define ORVEXCONTRACTS_EXPORT Q_DECL_EXPORT
#else
#define ORVEXCONTRACTS_EXPORT Q_DECL_IMPORT
#endif

// Reverse-domain prefix of every interface identifier: the host's interfaces
// and the plugins that implement them.
#define ORVEX_IID_PREFIX "de.vantrel."
