// What screen readers hear of the controls that differ from the widgets that they are made of.
#pragma once

// Once for the program; further calls do nothing.
void InstallAccessibleControls();
