#include <histedit.h>

#include <clocale>
#include <cstdio>

#include "tools/yaxreg/shell/TerminalLines.h"

namespace yaxreg {

struct TerminalLines::Editor {
  std::string prompt;
  LineCompleter completer;
  EditLine* line = nullptr;
  History* history = nullptr;

  static Editor& Of(EditLine* line) {
    void* data = nullptr;
    el_get(line, EL_CLIENTDATA, &data);
    return *static_cast<Editor*>(data);
  }
  // The library only reads it.
  static char* Prompt(EditLine* line) { return &Of(line).prompt[0]; }
  static unsigned char Complete(EditLine* line, int) { return Of(line).CompleteLine(); }

  unsigned char CompleteLine();
  void Show(const std::vector<std::string>& words);
};

// Up to the cursor.
unsigned char TerminalLines::Editor::CompleteLine() {
  const LineInfo* const info = el_line(line);
  const std::string typed(info->buffer, static_cast<size_t>(info->cursor - info->buffer));
  const ShellCompletion completion = completer(typed);
  if (completion.words.empty()) return CC_ERROR;
  std::string word = CommonBeginning(completion.words);
  const bool isOne = completion.words.size() == 1;
  if (isOne && word.back() != '/' && word.back() != ':') word += ' ';
  if (word == typed.substr(completion.begin) || word.empty()) {
    if (isOne) return CC_ERROR;
    Show(completion.words);
    return CC_REDISPLAY;
  }
  el_deletestr(line, static_cast<int>(typed.size() - completion.begin));
  return el_insertstr(line, word.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
}

void TerminalLines::Editor::Show(const std::vector<std::string>& words) {
  std::putchar('\n');
  for (const std::string& word : words) std::printf("%s  ", word.c_str());
  std::putchar('\n');
  std::fflush(stdout);
}

TerminalLines::TerminalLines(const std::string& prompt, const LineCompleter& completer)
    : editor_(new Editor{prompt, completer}) {
  constexpr int kKept = 1000;  // lines
  std::setlocale(LC_CTYPE, "");
  Editor& editor = *editor_;
  HistEvent event;
  editor.line = el_init("yaxreg", stdin, stdout, stderr);
  editor.history = history_init();
  if (editor.line == nullptr || editor.history == nullptr) return;
  history(editor.history, &event, H_SETSIZE, kKept);
  history(editor.history, &event, H_SETUNIQUE, 1);
  el_set(editor.line, EL_CLIENTDATA, static_cast<void*>(&editor));
  el_set(editor.line, EL_PROMPT, &Editor::Prompt);
  el_set(editor.line, EL_EDITOR, "emacs");
  el_set(editor.line, EL_HIST, history, editor.history);
  el_set(editor.line, EL_ADDFN, "yaxreg-complete", "Complete the word", &Editor::Complete);
  el_set(editor.line, EL_BIND, "^I", "yaxreg-complete", nullptr);
  el_source(editor.line, nullptr);
}

TerminalLines::~TerminalLines() {
  if (editor_->history != nullptr) history_end(editor_->history);
  if (editor_->line != nullptr) el_end(editor_->line);
}

bool TerminalLines::Read(std::string* line) {
  Editor& editor = *editor_;
  if (editor.line == nullptr || editor.history == nullptr) return false;
  int count = 0;
  const char* const typed = el_gets(editor.line, &count);
  if (typed == nullptr || count <= 0) return false;
  line->assign(typed, static_cast<size_t>(count));
  while (!line->empty() && (line->back() == '\n' || line->back() == '\r')) line->pop_back();
  HistEvent event;
  if (line->find_first_not_of(" \t") != std::string::npos) {
    history(editor.history, &event, H_ENTER, line->c_str());
  }
  return true;
}

}  // namespace yaxreg
