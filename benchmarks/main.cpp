// SPDX-License-Identifier: MIT
// Runs the measurements that the command line selects.
#include "Peers.h"

#include "pipeline/frames/CopyPool.h"

#include <benchmark/benchmark.h>

#include <QtGui/QGuiApplication>
#include <QtWidgets/QApplication>

#include <iostream>
#include <string>

void registerConversions();
void registerDisplay();
void registerInteraction();
void registerMosaics();
void registerRatios();
void registerRest();
void registerScreen();
void registerShrinking();
void registerValues();
void registerWindow();

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    registerConversions();
    registerMosaics();
    registerScreen();
    registerDisplay();
    registerInteraction();
    registerValues();
    registerWindow();
    registerRatios();
    registerShrinking();
    registerRest();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::AddCustomContext("platform", QGuiApplication::platformName().toStdString());
    benchmark::AddCustomContext("participants", std::to_string(Vistrel::CopyPool::shared()->participants()));
    for (const std::string& sentence : Bench::absentPeers())
        std::cerr << sentence << '\n';
    const bool anyRun = benchmark::RunSpecifiedBenchmarks() != 0;
    benchmark::Shutdown();
    return anyRun ? 0 : 1;
}
