// The look every menu of the program shares.
#pragma once

// Installs the application style under which long menus scroll instead of
// splitting into columns, so that every item of any folder can be reached,
// and has the icons of folder menus ready soon after the start, so that the
// first click costs what later ones do. Call once, after the application
// object is made.
void InstallMenuStyle();
