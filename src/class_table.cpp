#include "frame/server/class_table.h"

#include "containers/con_cat.h"
#include "containers/linked_list.h"
#include "containers/stack.h"
#include "drawing/gdi_arc.h"
#include "drawing/gdi_ellipse.h"
#include "drawing/gdi_line.h"
#include "drawing/gdi_rectangle.h"
#include "drawing/screenshot.h"
#include "integrity/crc32.h"
#include "integrity/dat_file.h"
#include "settings/ini_file.h"
#include "settings/program_settings.h"
#include "shell/file_dialog.h"
#include "shell/font_dialog.h"
#include "shell/hourglass.h"
#include "shell/html_help.h"
#include "shell/print_dialog.h"
#include "shell/shell_execute.h"
#include "sysinfo/api_disks.h"
#include "sysinfo/computer_info.h"
#include "sysinfo/internet_connection.h"
#include "sysinfo/memory_status.h"
#include "sysinfo/mm_timer.h"
#include "sysinfo/os_info.h"
#include "winhelpers/hooks/form_size_constraint.h"
#include "winhelpers/hooks/list_view_extended.h"
#include "winhelpers/menu/icon_menu.h"

namespace velk {

std::span<const ClassEntry> Classes() noexcept {
    static constexpr ClassEntry kClasses[] = {
        EntryOf<CCRC32>(),
        EntryOf<CDatFile>(),
        EntryOf<CLinkedList>(),
        EntryOf<CStack>(),
        EntryOf<CConCat>(),
        EntryOf<CIniFile>(),
        EntryOf<CProgramSettings>(),
        EntryOf<CAPIDisks>(),
        EntryOf<COSInfo>(),
        EntryOf<CComputerInfo>(),
        EntryOf<CMemoryStatus>(),
        EntryOf<CMMTimer>(),
        EntryOf<CInternetConnection>(),
        EntryOf<CShellExecute>(),
        EntryOf<CFileDialog>(),
        EntryOf<CPrintDialog>(),
        EntryOf<CFontDialog>(),
        EntryOf<CHtmlHelp>(),
        EntryOf<CHourglass>(),
        EntryOf<CFormSizeConstraint>(),
        EntryOf<CListViewExtended>(),
        EntryOf<cIconMenu>(),
        EntryOf<CGDIArc>(),
        EntryOf<CGDIEllipse>(),
        EntryOf<CGDILine>(),
        EntryOf<CGDIRectangle>(),
        EntryOf<CScreenshot>(),
    };
    return kClasses;
}

}  // namespace velk
