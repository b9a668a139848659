#include "platform/cocoa/Alert.h"

#include "platform/cocoa/RunLoop.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <memory>

namespace cocoa {
namespace {

/// A child of the alert, which deletes it.
template <typename Widget, typename... Arguments> Widget* childOf(QWidget& parent, Arguments&&... arguments) {
    return std::make_unique<Widget>(std::forward<Arguments>(arguments)..., &parent).release();
}

} // namespace

Alert::Alert(const Texts& texts, QWidget* parent) : QDialog(parent), m_layout(childOf<QVBoxLayout>(*this)) {
    setWindowTitle(texts.message);
    QLabel* const message = childOf<QLabel>(*this, texts.message);
    QFont bold = message->font();
    bold.setBold(true);
    message->setFont(bold);
    m_layout->addWidget(message);
    QLabel* const informative = childOf<QLabel>(*this, texts.informative);
    informative->setWordWrap(true);
    m_layout->addWidget(informative);

    auto* const buttons = childOf<QDialogButtonBox>(*this);
    buttons->addButton(texts.defaultButton, QDialogButtonBox::AcceptRole)->setDefault(true);
    if (!texts.alternateButton.isEmpty())
        buttons->addButton(texts.alternateButton, QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_layout->addWidget(buttons);
}

void Alert::setAccessoryView(std::unique_ptr<QWidget> view) {
    QWidget* const inserted = view.release();
    m_layout->insertWidget(m_layout->count() - 1, inserted);
    inserted->setFocus();
}

Alert::Response Alert::runModal() {
    const RunLoop::Mode modal;
    return exec() == Accepted ? defaultReturn : alternateReturn;
}

} // namespace cocoa
