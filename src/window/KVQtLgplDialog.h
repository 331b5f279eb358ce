// SPDX-License-Identifier: MIT
// The licences under which the toolkit is used.
#pragma once

#include <QtWidgets/QDialog>

namespace Vistrel {

/// Shows the texts of the toolkit's licences, and says where its source code is to be had.
class KVQtLgplDialog : public QDialog
{
    Q_OBJECT

public:
    explicit KVQtLgplDialog(QWidget* parent = nullptr);
};

} // namespace Vistrel
