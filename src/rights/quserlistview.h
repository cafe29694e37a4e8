#pragma once

#include "orvexrolelistbase.h"

// A list view of plain items; drops are taken only from another QUserListView.
class ORVEXWORKBENCH_EXPORT QUserListView : public OrvexRoleListBase
{
    Q_OBJECT

public:
    explicit QUserListView(QWidget *parent = nullptr);
    ~QUserListView() override;

    using OrvexRoleListBase::addRow;
    using OrvexRoleListBase::findItems;
    using OrvexRoleListBase::takeRow;
    using OrvexRoleListBase::takeRows;

private:
    bool takesRowsFrom(const OrvexRoleListBase *source) const override;
};
