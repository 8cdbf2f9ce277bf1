#include "picture/vips_runtime.h"

#include <mutex>
#include <new>
#include <shared_mutex>
#include <string>
#include <vector>

#include <gmodule.h>
#include <vips/vips8>

#include <vips/vector.h> // does not compile before the header above

#include "picture/plain_reason.h"
#include "vistaTrimPhoto/picture_runtime.h"

namespace vistaTrim::photo {

namespace {

// Process-wide, because libvips is.
std::shared_mutex insideVips;
std::mutex gate; // held by a thread that waits to be alone, so that no other enters before it
std::mutex starting;
bool started = false;

// libvips reports a damaged file as a warning and as an error; the error is enough.
void DropMessage(const char*, GLogLevelFlags, const char*, void*)
{
}

// libvips loads its modules (among others a PDF reader and all of ImageMagick) at startup,
// which takes longer than analysing a photograph. The only way to stop it is to point it to a home
// without modules; LoadModules loads the two useful ones when they are needed.
int InitWithoutModules(const char* programName)
{
    constexpr const char* kHome = "VIPSHOME";
    if (g_getenv(kHome) != nullptr) // set on purpose; let libvips load what it finds
        return VIPS_INIT(programName);
    g_setenv(kHome, "/nonexistent", FALSE);
    const int status = VIPS_INIT(programName);
    g_unsetenv(kHome);
    return status;
}

// Loaders never hardened against hostile files stay blocked, except for three formats that
// photographs do use. The matrix loader is blocked too: it takes any text that begins with two
// numbers.
void BlockUntrustedLoaders()
{
    vips_block_untrusted_set(TRUE);
    vips_operation_block_set("VipsForeignLoadPpm", FALSE);
    vips_operation_block_set("VipsForeignLoadJxl", FALSE);
    vips_operation_block_set("VipsForeignLoadJp2k", FALSE);
    vips_operation_block_set("VipsForeignLoadMatrix", TRUE);
}

void LoadModules()
{
    for (const char* name : {"vips-heif.so", "vips-jxl.so"}) {
        const std::string path = std::string(VISTATRIM_VIPS_LIBDIR) + "/vips-modules-" +
                                 std::to_string(vips_version(0)) + "." +
                                 std::to_string(vips_version(1)) + "/" + name;
        // A libvips built without modules has these formats built in or lacks them.
        GModule* module = g_module_open(path.c_str(), G_MODULE_BIND_LAZY);
        if (module != nullptr)
            g_module_make_resident(module);
    }
    BlockUntrustedLoaders(); // the new ones too
}

} // namespace

void StartPictureRuntime(const char* programName)
{
    const std::lock_guard<std::mutex> alone(starting);
    if (started)
        return;
    if (InitWithoutModules(programName) != 0)
        throw PhotoError(PhotoError::Kind::Internal,
                         "the picture library, libvips, does not start");
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_INFO),
                      DropMessage, nullptr);
    BlockUntrustedLoaders();
    // The library that compiles libvips' vector code at run time is not safe when several threads
    // free such code at once; a run with several workers crashed in it. docs/program_speed.md says
    // what this costs.
    vips_vector_set_enabled(FALSE);
    // Every photograph is read once; cached operations would only hold its memory.
    vips_cache_set_max(0);
    started = true;
}

void StopPictureRuntime()
{
    vips_shutdown();
}

void SetThreadsPerPicture(int count)
{
    StartPictureRuntime();
    vips_concurrency_set(count);
}

void LeavePictureThread()
{
    vips_thread_shutdown();
}

void LoadVipsModules()
{
    static std::once_flag once;
    StartPictureRuntime();
    const std::lock_guard<std::mutex> entering(gate);
    const std::lock_guard<std::shared_mutex> alone(insideVips);
    std::call_once(once, LoadModules);
}

void RunVips(const std::function<void()>& work, PhotoError::Kind kind)
{
    StartPictureRuntime();
    try {
        std::unique_lock<std::mutex> entering(gate);
        std::shared_lock<std::shared_mutex> inside(insideVips);
        entering.unlock();
        work();
        return;
    } catch (const vips::VError&) {
        // Run again, alone, to get the reason.
    } catch (const std::bad_alloc&) {
        throw PhotoError(PhotoError::Kind::OutOfMemory, "not enough memory");
    }
    std::lock_guard<std::mutex> entering(gate);
    std::lock_guard<std::shared_mutex> alone(insideVips);
    vips_error_clear();
    try {
        work();
    } catch (const vips::VError& error) {
        const std::string message = error.what();
        vips_error_clear();
        throw PlainError(kind, message);
    }
}

} // namespace vistaTrim::photo
