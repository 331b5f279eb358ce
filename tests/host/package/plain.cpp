// SPDX-License-Identifier: MIT
// A host without Qt's headers: its loop runs, and it catches the library's exceptions by their type.
#include <Vistrel/Application.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>

int main(int argc, char** argv)
{
    Vistrel::Application application(argc, argv);
    try {
        Vistrel::Application second(argc, argv);
        return 2;
    } catch (const std::runtime_error& refusal) {
        std::printf("%s\n", refusal.what());
        if (!std::strstr(refusal.what(), "already been allocated"))
            return 3;
    }
    application.addIdleMethod([](void* self) { static_cast<Vistrel::Application*>(self)->exit(0); }, &application);
    return application.exec();
}
