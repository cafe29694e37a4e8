#pragma once

#include "orvexworkbenchglobal.h"

#include <QString>

// How a process that shows boards draws their pages. Called once, after the
// application object exists and before the first board is created.
class ORVEXWORKBENCH_EXPORT OrvexRendering
{
public:
    // Where OpenGL is only emulated on the CPU (no graphics hardware, as under
    // Xvfb or on many remote desktops), Qt Quick's software renderer puts the
    // pages' frames on screen for a fraction of the CPU time that emulated
    // OpenGL costs, CPU time the boards' thumbnails need. A renderer the user
    // chose (QT_QUICK_BACKEND) is kept. Returns the renderer in use ("" is
    // OpenGL).
    static QString chooseSceneGraph();

    // Whether the OpenGL renderer is a software one; true without OpenGL.
    static bool isSoftwareRenderer(const QString &glRenderer);
};
