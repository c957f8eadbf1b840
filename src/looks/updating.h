#pragma once
// Overwriting and removing one look of a node, chosen by the artist in a host panel. Both work on
// the node whose button was pressed.

namespace cobaltrig::looks {

/// Asks which look to overwrite and replaces its stored copy by the node's present state; the look
/// keeps its number and uid. The artist's clipboard stays as it was. One undo step.
void update_preset();

/// Asks which look to remove and takes its button off the node and its stored copies out of the
/// container. The other looks keep their numbers. One undo step.
void delete_preset();

} // namespace cobaltrig::looks
