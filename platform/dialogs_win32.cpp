#include "platform/dialogs.h"

#include "platform/wide_win32.h"

#include <windows.h>

#include <commdlg.h>

namespace kelmora::platform {

bool AskForFile(const FileDialog& dialog)
{
    OPENFILENAMEW record = {};
    record.lStructSize = sizeof record;
    record.hwndOwner = static_cast<HWND>(dialog.owner);
    record.lpstrFilter = Wide(dialog.filter);
    record.lpstrFile = reinterpret_cast<wchar_t*>(dialog.path);
    record.nMaxFile = static_cast<DWORD>(dialog.capacity);
    record.lpstrTitle = Wide(dialog.title);
    record.Flags = dialog.flags;
    record.lpstrDefExt = Wide(dialog.defaultExtension);
    return (dialog.kind == FileDialogKind::Open ? GetOpenFileNameW(&record) : GetSaveFileNameW(&record)) != 0;
}

} // namespace kelmora::platform
