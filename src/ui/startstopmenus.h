#pragma once

class AppCore;
class QMenu;
class QWidget;

// The drop-down menus of the start and stop buttons: an entry for all sites,
// a separator, and one entry per site that starts or stops that site alone.
// MediaFire's entries exist but are switched off, as its site row is hidden.
namespace StartStopMenus {

QMenu *buildStartMenu(AppCore *core, QWidget *parent); // mnuStart
QMenu *buildStopMenu(AppCore *core, QWidget *parent);  // mnuStop

} // namespace StartStopMenus
