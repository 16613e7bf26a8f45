// What the tests of the skin share: its files, and the windows that its markup makes.
#pragma once

#include "tools/skinview/scenes/Scenes.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

// With the skin of the source tree in place of the program's own.
class SkinTest : public testing::Test
{
protected:
    SkinTest();
    SkinTest(const SkinTest&) = delete;
    SkinTest& operator=(const SkinTest&) = delete;
    ~SkinTest() override;
};

// Names of the files in a folder of the skin, without what follows the first point.
std::set<std::string> NamesIn(const std::string& folder, const std::string& ending);
QString MarkupOf(const std::string& name);
std::vector<std::string> LanguageStems();
SceneTexts TextsOf(const std::string& stem);
// Every control with a widget below a window's root that is to be seen, and those it lies in.
std::vector<VisualControl*> VisibleControls(const WindowImplBase& window);
// Name and text, to be found again.
std::string Describe(const CControlUI& control);
