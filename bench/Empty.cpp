// Does nothing, linked with what the command links: the floor for its start.

#include <pugixml.hpp>

#include <cstdio>

int main(int argc, char**) {
    // Keeps the library needed without using it.
    if (argc > 100) std::puts(pugi::xml_document().name());
    return 0;
}
