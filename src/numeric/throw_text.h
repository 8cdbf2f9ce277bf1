// Throws the library's messages.
#ifndef VISTATRIM_NUMERIC_THROW_TEXT_H
#define VISTATRIM_NUMERIC_THROW_TEXT_H

namespace vistaTrim {

// A bare char pointer, without const: handlers for char*, const char* and void* all catch it.
[[noreturn]] inline void ThrowText(const char* text)
{
    throw const_cast<char*>(text);
}

} // namespace vistaTrim

#endif
