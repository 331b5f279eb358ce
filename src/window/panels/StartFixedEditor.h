// SPDX-License-Identifier: MIT
// Asks for how many frames an acquisition is to run, and starts it.
#pragma once

#include <QtWidgets/QWidget>

class QPushButton;
class QSpinBox;

namespace Vistrel {

/// A number and a button. Enter starts, too. The count that was entered last is kept; while the bounds exclude it, the
/// nearest one within them is shown.
class StartFixedEditor : public QWidget
{
    Q_OBJECT

public:
    explicit StartFixedEditor(QWidget* parent = nullptr);
    ~StartFixedEditor() override;

    /// Sets what a count may be, and by how much the arrows change it; 1, 65536 and 1 at first. Bounds below zero count
    /// as zero, an upper bound below the lower one as that one, and a step below one as one.
    void setBounds(int min, int max, int step);
    int count() const;
    void setStartEnabled(bool isEnabled);

Q_SIGNALS:
    void started(int count);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void start();

    QSpinBox* m_spinBox = nullptr;
    QPushButton* m_button = nullptr;
    int m_wanted = 1; // as the user entered it, in the bounds of then
};

} // namespace Vistrel
