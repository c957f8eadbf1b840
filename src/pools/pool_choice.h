#pragma once
// Choosing a pool: the combo box of pool names that the export and the import window share, its
// tool tip as the path of the pool on show, and the icon-size slider of both trees.

class QSlider;
class QTreeWidget;

namespace cobaltrig::pools {

class PoolWindow;

/// The entry of the export window's combo box that opens the panel for a new pool.
inline constexpr const char* kNewPoolEntry = "-- new pool --";

/// Puts the combo box on the stored `current_pool`, with its path as tool tip; with an unknown
/// pool the box stays on its first entry without a tool tip.
void set_current_pool(PoolWindow& window);
/// The reaction to a new combo box entry: the new-pool panel, or tool tip, tree and stored pool.
void update_pool_combo(PoolWindow& window);
/// The tool tip from a fresh reading of the pools, then the tree.
void change_combo_tooltip(PoolWindow& window);
/// Stores the combo box's text as `current_pool`.
void change_current_pool(PoolWindow& window);
/// Sets the tree's icon size from the slider and stores it as `icon_size`.
void set_tree_icon_size(QSlider* slider, QTreeWidget* tree);

/// The stored `icon_size` of a fresh settings reading; 16 when it is missing or no number.
int stored_icon_size();

} // namespace cobaltrig::pools
