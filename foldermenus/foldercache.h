// Each title keeps its root folder menu until something says it is out of date.
#pragma once

struct ReadyMenu;

// Drops the cached root menu of one title; null means of every title.
void DestroyFolderCachedMenu(ReadyMenu *readyMenu);
