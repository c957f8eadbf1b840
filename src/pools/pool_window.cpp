#include "pools/pool_window.h"

#include "frame/guarded.h"
#include "pools/pool_choice.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <set>

namespace cobaltrig::pools {

namespace py = pybind11;

PoolWindow::PoolWindow(const char* class_name, const QString& title)
    : class_name_(class_name), key_press_name_(reaction_name("keyPressEvent")) {
    setMinimumWidth(600);
    setWindowFlags(Qt::WindowStaysOnTopHint);
    setWindowTitle(title);
    settings = siblings::load_settings();
    icons = siblings::load_icons();
}

PoolWindow::~PoolWindow() {
    // Qt may delete the window from its event loop, where the GIL is not held, or after the
    // interpreter has gone; the Python objects are let go accordingly. The tree is still there:
    // QWidget deletes the children only after this.
    if (!Py_IsInitialized()) {
        settings.mapping.release();
        dirlist.abandon();
        return;
    }
    py::gil_scoped_acquire gil;
    if (tree)
        clear_pool_tree(tree);
    settings.mapping = py::object();
    dirlist.clear();
}

py::object PoolWindow::pythonWindow() {
    // Found as the window class Python knows: the base is no Python class of its own.
    return py::cast(this, py::return_value_policy::reference);
}

void PoolWindow::create_pool_widgets(const std::function<QLineEdit*()>& make_name_field,
                                     int icon_size, bool offer_new_pool) {
    label_name = new QLabel(QStringLiteral("name: "), this);
    input_name = make_name_field();

    slider_size = new QSlider(Qt::Horizontal, this);
    slider_size->setMinimum(5);
    slider_size->setMaximum(40);
    slider_size->setFixedHeight(20);
    slider_size->setValue(icon_size);

    combo_pool = new QComboBox(this);
    for (const auto& [name, path] : settings.pools)
        combo_pool->addItem(QString::fromStdString(name));
    if (offer_new_pool)
        combo_pool->addItem(QLatin1String(kNewPoolEntry));
    set_current_pool(*this);

    tree = new PoolTreeWidget(this);
    tree->setColumnCount(1);
    tree->setContextMenuPolicy(Qt::CustomContextMenu);
}

void PoolWindow::create_pool_layouts() {
    layout_top = new QHBoxLayout();
    layout_top->addWidget(label_name, 1);
    layout_top->addWidget(input_name, 6);
    layout_top->addWidget(slider_size, 2);

    layout_master = new QVBoxLayout(this);
    layout_master->addLayout(layout_top);
    layout_master->addWidget(combo_pool);
    layout_master->addWidget(tree);
}

void PoolWindow::create_pool_signals(QPushButton* close_button) {
    // Connected only once the stored pool was chosen, so that opening the window stores nothing.
    connect_guarded(close_button, &QPushButton::clicked, this, reaction_name("close"),
                    [this] { close(); });
    connect_guarded(combo_pool, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                    reaction_name("update_pool_combo"), [this] { update_pool_combo(*this); });
    connect_guarded(tree, &QTreeWidget::customContextMenuRequested, this,
                    reaction_name("create_tree_right_click_menu"),
                    [this] { create_tree_right_click_menu(); });
    connect_guarded(slider_size, &QSlider::valueChanged, this, reaction_name("set_tree_icon_size"),
                    [this] { set_tree_icon_size(slider_size, tree); });
}

QAction* PoolWindow::make_action(const char* icon_key, const QString& text) {
    auto it = icons.find(icon_key);
    const QIcon icon(it == icons.end() ? QString() : QString::fromStdString(it->second));
    return new QAction(icon, text, this);
}

const char* PoolWindow::reaction_name(const char* reaction) const {
    // Connections hold on to the name for as long as they live, so each is kept for good; there
    // are only a handful.
    static auto* names = new std::set<std::string>();
    return names->insert(std::string(class_name_) + '.' + reaction).first->c_str();
}

void PoolWindow::message(const QString& text) {
    siblings::show_message_box(this, text.toStdString());
}

void PoolWindow::keyPressEvent(QKeyEvent* event) {
    guarded(key_press_name_, [&] {
        if (event->key() == Qt::Key_Escape)
            close();
    });
}

} // namespace cobaltrig::pools
