// Writes dlib's frontal face detector as a C++ source, for face_finder.cpp. dlib has it
// compiled in as base64 text of compressed data, which takes a quarter of a second to unpack each
// time a program starts; plain 64-bit words are ready in a millisecond.
//
// usage: make_face_model FILE
#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include <dlib/image_processing/frontal_face_detector.h>

// A build step: an uncaught exception is report enough.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const std::string model = dlib::get_serialized_frontal_faces();
    std::FILE* file = std::fopen(argv[1], "w");
    if (file == nullptr) {
        std::perror(argv[1]);
        return 1;
    }
    std::fprintf(file,
                 "#include \"regions/face_model.h\"\n\n"
                 "namespace vistaTrim::photo {\n\n"
                 "const size_t kFaceModelBytes = %zu;\n"
                 "const uint64_t kFaceModel[] = {",
                 model.size());
    for (size_t at = 0; at < model.size(); at += sizeof(uint64_t)) {
        uint64_t word = 0; // in this machine's byte order; the build machine must match the target
        std::memcpy(&word, model.data() + at, std::min(sizeof word, model.size() - at));
        std::fprintf(file, "%s0x%" PRIx64 ",", at % 64 == 0 ? "\n" : "", word);
    }
    std::fprintf(file, "\n};\n\n} // namespace vistaTrim::photo\n");
    return std::fclose(file) == 0 ? 0 : 1;
}
