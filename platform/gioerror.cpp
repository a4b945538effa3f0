#include "platform/gioerror.h"

#include <gio/gio.h>

namespace platform {

namespace {

OSErr StatusOf(GQuark domain, int code) {
    if (domain == G_IO_ERROR) {
        switch (code) {
        case G_IO_ERROR_NOT_FOUND:
            return fnfErr;
        case G_IO_ERROR_EXISTS:
            return dupFNErr;
        case G_IO_ERROR_NOT_DIRECTORY:
            return dirNFErr;
        case G_IO_ERROR_PERMISSION_DENIED:
            return afpAccessDenied;
        case G_IO_ERROR_NO_SPACE:
            return dskFulErr;
        case G_IO_ERROR_READ_ONLY:
            return wPrErr;
        case G_IO_ERROR_BUSY:
            return fBsyErr;
        case G_IO_ERROR_FILENAME_TOO_LONG:
        case G_IO_ERROR_INVALID_FILENAME:
            return bdNamErr;
        case G_IO_ERROR_TOO_MANY_OPEN_FILES:
            return tmfoErr;
        case G_IO_ERROR_CANCELLED:
            return userCanceledErr;
        case G_IO_ERROR_INVALID_ARGUMENT:
            return paramErr;
        case G_IO_ERROR_NOT_SUPPORTED:
            return unimpErr;
        default:
            return ioErr;
        }
    }
    if (domain == G_SPAWN_ERROR) {
        switch (code) {
        case G_SPAWN_ERROR_NOENT:
        case G_SPAWN_ERROR_NOTDIR:
            return fnfErr;
        case G_SPAWN_ERROR_ACCES:
        case G_SPAWN_ERROR_PERM:
            return afpAccessDenied;
        case G_SPAWN_ERROR_NOMEM:
            return memFullErr;
        case G_SPAWN_ERROR_NAMETOOLONG:
            return bdNamErr;
        case G_SPAWN_ERROR_MFILE:
            return tmfoErr;
        default:
            return ioErr;
        }
    }
    if (domain == G_FILE_ERROR) {
        switch (code) {
        case G_FILE_ERROR_NOENT:
            return fnfErr;
        case G_FILE_ERROR_ACCES:
        case G_FILE_ERROR_PERM:
            return afpAccessDenied;
        case G_FILE_ERROR_EXIST:
            return dupFNErr;
        default:
            return ioErr;
        }
    }
    return ioErr;
}

} // namespace

OSErr TakeGioError(GError *error) {
    const OSErr err = StatusOf(error->domain, error->code);
    g_error_free(error);
    return err;
}

} // namespace platform
