// The settings of the program, kept as texts in the per-user store. Nothing is cached: every call
// goes to the store and raises its errors. A setting that is not stored reads as its default.
//
// Flags read true for every number but 0, and raise error 13 when the stored text is no number.
#pragma once

#include <string>
#include <vector>

namespace korvex::basSettings {

// The processing folder last used; empty by default.
std::string LastPath();
// The same for a starting program, which begins in the file system's default folder.
std::string LastPathAtStart();
void SetLastPath(const std::string& path);

// Name of the output workbook, without folder.
std::string OutputFile();
void SetOutputFile(const std::string& name);

// Folder of the output workbook, with a separator at its end.
std::string OutputPath();
void WriteOutputPath(const std::string& folder);

// How the output workbook's full name is formed: one of the two texts.
inline constexpr char kByConstantName[] = "Output File by constant name";
inline constexpr char kByFolder[] = "Output File by Folder";
std::string OutputFileMethod();
void SetOutputFileMethod(const std::string& method);

// The output workbook's full name by the method chosen: the constant one, or the file name in the
// folder that is being processed. Empty for an unknown method.
std::string OutputFullName();
// Splits a full name into OutputPath and OutputFile.
void WriteOutputFullName(const std::string& full_name);

// Replace an existing output workbook without asking.
bool AutoReplaceOutputFiles();
void SetAutoReplaceOutputFiles(bool replace);

// Open the output workbook when a run ends. The options dialog keeps its check box as a number.
bool LaunchOutputFile();
bool LaunchOutputFileIsStored();
int LaunchOutputFileNumber();
void SetLaunchOutputFile(bool launch);
void SetLaunchOutputFileNumber(int launch);

bool SendEmailOnError();
void SetSendEmailOnError(bool send);
std::string ErrorEmailAddress();
void SetErrorEmailAddress(const std::string& address);

// Whether a run takes the sub-folders of a folder (the first text) or the files that the user
// selected (any other text). The procedures keep their name of long standing.
inline constexpr char kProcessSubFolders[] = "Process Sub-Folders of this folder:";
inline constexpr char kProcessSelectedFiles[] = "Process the selected files.";
std::string EverySheetRepresents();
void SetEverySheetRepresents(const std::string& mode);
bool ProcessingSubFolders();
bool ProcessingFiles();

// Names of columns, in order. A name cannot hold the separator of the stored text.
inline constexpr char kListSeparator[] = "<-- -->";
std::vector<std::string> OutputColumns();
void SetOutputColumns(const std::vector<std::string>& names);
std::vector<std::string> KeysColumns();
void SetKeysColumns(const std::vector<std::string>& names);
std::string DataColumn();
void SetDataColumn(const std::string& name);

// Deletes every setting. Never fails; tells the user once when any could not be deleted, which is
// so for each one that is not stored.
void DeleteAllSettings();

}  // namespace korvex::basSettings
