// SPDX-License-Identifier: MIT
// The about box of the library and of its host.
#pragma once

#include <QtWidgets/QDialog>

#include <memory>

class QPixmap;

namespace Ui {
class AboutDialog;
}

namespace Vistrel {

/// A picture and a heading, the details below, and a button that closes the box.
class AboutDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AboutDialog(QWidget* parent = nullptr);
    ~AboutDialog() override;

    /// Describes this library, and fixes the size.
    void describeLibrary();

    /// Shows the icon, scaled to 128 pixels, above the title, which is plain text. Either may be empty.
    void setHeader(const QString& title, const QPixmap& icon);
    void setDetails(const QString& text); ///< plain or rich; long lines are wrapped
    QString details() const;
    void fixSize(); ///< to what the contents need

private:
    const std::unique_ptr<Ui::AboutDialog> m_form;
};

} // namespace Vistrel
