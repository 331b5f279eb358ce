// SPDX-License-Identifier: MIT
// The licences of Qt.
#pragma once

#include <QtWidgets/QDialog>

namespace Vistrel {

/// Shows the texts of Qt's licences, and says where to get its source code.
class KVQtLgplDialog : public QDialog
{
    Q_OBJECT

public:
    explicit KVQtLgplDialog(QWidget* parent = nullptr);
};

} // namespace Vistrel
