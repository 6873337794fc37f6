// Reads an XML document, finds an element in it, changes it and writes the whole to a file.
// SPDX-License-Identifier: see LICENSE

#include <qxbase.h>

#include <cstdio>

int main()
{
    char text[] = "<scene><lamp name='sky' power='1'/><lamp name='sun' power='3'/></scene>";
    qxSerializeAdapterMemory input(text, sizeof(text) - 1);
    qxXmlDom document;
    document.read(&input);
    auto* const sun = dynamic_cast<qxXmlElement*>(document.findItem("scene/lamp[name=sun]"));
    if (!sun) return 1; // document.getError() tells what is wrong, with line and column
    sun->setAttribute("power", "%d", sun->getAttribute("power").num() + 1);

    qxSerializeAdapterFile output("scene.xml", QX_SERIALIZE_OUTPUT);
    document.write(&output);
    output.flush();
    if (output.hasError()) return 1;
    std::printf("scene.xml: the sun has power %s\n", sun->getAttribute("power").getString());
    return 0;
}
