#include "frame/bridge_probe.h"

#include "frame/guarded.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace cobaltrig {

BridgeProbe::BridgeProbe() {
    input_text = new QLineEdit(this);
    push_apply = new QPushButton(QStringLiteral("apply"), this);
    label_result = new QLabel(this);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(input_text);
    layout->addWidget(push_apply);
    layout->addWidget(label_result);
    connect_guarded(push_apply, &QPushButton::clicked, this, "BridgeProbe.apply", [this] { apply(); });
}

void BridgeProbe::apply() {
    label_result->setText(input_text->text());
    if (reaction_)
        reaction_.get()(input_text->text().toStdString());
}

} // namespace cobaltrig
