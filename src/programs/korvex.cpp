// The desktop program.
#include <wx/app.h>

wxIMPLEMENT_APP(wxApp);
