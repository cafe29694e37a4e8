#include "quserlistview.h"

QUserListView::QUserListView(QWidget *parent)
    : OrvexRoleListBase(parent)
{
}

QUserListView::~QUserListView() = default;

bool QUserListView::takesRowsFrom(const OrvexRoleListBase *source) const
{
    return qobject_cast<const QUserListView *>(source) != nullptr;
}
