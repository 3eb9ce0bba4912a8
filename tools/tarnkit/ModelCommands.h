#pragma once

namespace CLI {
class App;
}

namespace tarnkit::tool {

// The commands that work on documents, and those about the program. Each function enters its
// command into the program.

/// `tarnkit run`: performs an editing session.
void addRunCommand(CLI::App& app);
/// `tarnkit open`: opens a document and prints it.
void addOpenCommand(CLI::App& app);
/// `tarnkit save`: opens a document and writes it again.
void addSaveCommand(CLI::App& app);
/// `tarnkit send`: writes the device graph of a document.
void addSendCommand(CLI::App& app);
/// `tarnkit inspect`: tells what a file is and prints it.
void addInspectCommand(CLI::App& app);
/// `tarnkit render`: draws a document or a group of it.
void addRenderCommand(CLI::App& app);
/// `tarnkit reference`: writes the patch reference as HTML pages.
void addReferenceCommand(CLI::App& app);
/// `tarnkit check`: tells what is wrong in documents.
void addCheckCommand(CLI::App& app);
/// `tarnkit find`: finds nodes and ports in documents.
void addFindCommand(CLI::App& app);
/// `tarnkit images`: writes the images of a document as PNG files.
void addImagesCommand(CLI::App& app);
/// `tarnkit diff`: tells what leads from one document to another.
void addDiffCommand(CLI::App& app);
/// `tarnkit merge`: merges what two branches made of a document.
void addMergeCommand(CLI::App& app);
/// `tarnkit completion`: prints what makes a shell complete this command line.
void addCompletionCommand(CLI::App& app);
/// `tarnkit manpage`: prints or writes the pages of the system's manual.
void addManPageCommand(CLI::App& app);
/// `tarnkit git`: has git compare and merge documents.
void addGitCommand(CLI::App& app);

}  // namespace tarnkit::tool
