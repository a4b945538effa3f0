// The application event loop.
#pragma once

// Runs until QuitApplicationEventLoop is called.
void RunApplicationEventLoop();
// Ends the application event loop; nested loops (open menus, dialogs) end too.
void QuitApplicationEventLoop();
