#include "tools/tarnel/pagetemplate.h"

// The build makes the file, and the assembler takes it as it is: as an array in C++ it would take a minute.
// NOLINTNEXTLINE(hicpp-no-assembler)
__asm__(".pushsection .rodata\n"
        "tarnelPageTemplate: .incbin \"" TARNEL_PAGE_TEMPLATE "\"\n"
        "tarnelPageTemplateEnd: .byte 0\n"
        ".popsection\n");

extern "C" {
extern const char tarnelPageTemplate[];    // NOLINT(modernize-avoid-c-arrays)
extern const char tarnelPageTemplateEnd[]; // NOLINT(modernize-avoid-c-arrays)
}

namespace tool {

std::string_view pageTemplate()
{
    return {tarnelPageTemplate, tarnelPageTemplateEnd};
}

} // namespace tool
