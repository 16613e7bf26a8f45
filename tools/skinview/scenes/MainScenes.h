// The pages of the main window, each as the wizard shows it.
#pragma once

#include "tools/skinview/scenes/Scenes.h"

#include <QImage>

void FillStart(SceneWindow& window, const SceneTexts& texts, const QString& message);
void FillDrives(SceneWindow& window, const SceneTexts& texts, const QString& message);
void FillCreateImage(SceneWindow& window, const SceneTexts& texts, const QString& message);
void FillTypes(SceneWindow& window, const SceneTexts& texts, const QString& message);
void FillResults(SceneWindow& window, const SceneTexts& texts, const QString& message);

// Hills below a sky.
QImage SamplePicture();
// Of any window: texts by the names of controls, and what is shown.
void SetTexts(const SceneWindow& window, const std::vector<std::pair<const char*, QString>>& texts);
void Show(const SceneWindow& window, std::initializer_list<const char*> names, bool isVisible);
