#include <cstdio>
#include <cstdlib>

int main(int, char** arguments) {
    for (char** argument = arguments; *argument != nullptr; ++argument)
        std::puts(*argument);
    const char* mark = std::getenv("BRIMWATCH_TEST_MARK");
    std::puts(mark != nullptr ? mark : "no mark");
    return 7;
}
