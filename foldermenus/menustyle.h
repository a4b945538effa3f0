// The look every menu of the program shares.
#pragma once

// Installs the application style under which long menus scroll instead of
// splitting into columns, so that every item of any folder can be reached.
// Call once, after the application object is made.
void InstallMenuStyle();
