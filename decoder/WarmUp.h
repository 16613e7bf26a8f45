// Reads one good picture of each kind, so that all that is loaded when it is first needed has been loaded: later no file can be
// opened.
#pragma once

void WarmUpDecoders();
