// File trees: items with depth and full path, expansion under their parent,
// tree notifications and in-place edits for new item and rename.
#include <algorithm>
#include <cstring>

#include "env/ascii_case.h"
#include "env/controls/control_internal.h"

namespace env {

namespace {

WindowBase::State &B () { return CurrentControls ()->Base; }
ControlDriver::State &C () { return *CurrentControls (); }

TreeObject *AsTree (const void *Target) { return ObjectAs<TreeObject> (B ().FindControl (Target)); }

uint16_t DepthOf (const std::string &Path) {
  size_t Depth = 0;
  bool InName = false;
  for (char Ch : Path) {
    if (Ch == '\\') {
      InName = false;
    } else if (!InName) {
      InName = true;
      Depth++;
    }
  }
  return static_cast<uint16_t> (std::min<size_t> (Depth, 0xFFFF));
}

void SetName (FILE_LIST_ITEM &Item, const std::string &Name) {
  std::memset (Item.Name, 0, sizeof (Item.Name));
  std::memcpy (Item.Name, Name.data (), std::min (Name.size (), sizeof (Item.Name) - 1));
}

void SetPath (FILE_LIST_ITEM &Item, const std::string &Path) {
  std::memset (Item.Path, 0, sizeof (Item.Path));
  std::memcpy (Item.Path, Path.data (), std::min (Path.size (), sizeof (Item.Path) - 1));
}

std::string PathOf (const TreeItem &Item) { return reinterpret_cast<const char *> (Item.Item.Path); }

// Index after the last descendant of the item at Index.
size_t EndOfSubtree (const TreeObject &Tree, size_t Index) {
  size_t End = Index + 1;
  while (End < Tree.Items.size () && Tree.Items[End]->Item.Depth > Tree.Items[Index]->Item.Depth) End++;
  return End;
}

}  // namespace

// ------------------------------------------------------------ tree object

uint16_t TreeObject::IndexOf (const TreeItem *Item) const {
  for (size_t I = 0; I < Items.size (); I++)
    if (Items[I].get () == Item) return static_cast<uint16_t> (I);
  return kNoRow;
}

void TreeObject::Insert (size_t Position, std::unique_ptr<TreeItem> Item) {
  Items.insert (Items.begin () + static_cast<std::ptrdiff_t> (Position), std::move (Item));
  if (Data.SelectedItem != kNoRow && Data.SelectedItem >= Position) Data.SelectedItem++;
  Data.ItemCount = static_cast<UINT16> (Items.size ());
}

void TreeObject::Remove (size_t Index) {
  if (Index >= Items.size ()) return;
  size_t End = EndOfSubtree (*this, Index);
  size_t Count = End - Index;
  Items.erase (Items.begin () + static_cast<std::ptrdiff_t> (Index), Items.begin () + static_cast<std::ptrdiff_t> (End));
  if (Data.SelectedItem != kNoRow) {
    if (Data.SelectedItem >= End)
      Data.SelectedItem = static_cast<UINT16> (Data.SelectedItem - Count);
    else if (Data.SelectedItem >= Index)
      Data.SelectedItem = kNoRow;
  }
  Data.ItemCount = static_cast<UINT16> (Items.size ());
  if (Data.TopItem >= Items.size ()) Data.TopItem = 0;
}

void TreeObject::DropEdit () {
  if (Edit == nullptr) return;
  CONTROL *Field = Edit;
  Edit = nullptr;
  WINDOW_HEADER *Parent = Field->Parent;
  if (B ().FindAnyWindow (Parent) != nullptr && Parent->FocusControl == Field) Parent->FocusControl = Rec;
  B ().RemoveControl (Field);
  if (EditNew) {
    uint16_t Index = IndexOf (EditItem);
    if (Index != kNoRow) Remove (Index);
  }
  EditItem = nullptr;
  EditNew = false;
  EditParentPath.clear ();
}

UINTN TreeObject::Send (UINT8 Code, uint16_t Index, TREE_NOTIFY_DATA &Info) {
  MESSAGE Message {};
  Message.Type = MSG_TREE_NOTIFY;
  Message.Code = Code;
  Message.Word4 = Index;
  Message.Pointer8 = &Info;
  return B ().Notify (Rec, Message);
}

namespace {

uint32_t FinishTreeItemEdit (TreeObject *Tree, const std::string &Typed, bool Apply) {
  if (Tree->Edit == nullptr) return 0;
  WindowBase::State::Scope Guard (B ());
  std::string Text = CutText (Typed.c_str (), kMaxEditText);
  static_cast<ControlObject *> (Tree->Edit->BaseState)->SetText (Text.c_str ());
  if (!Apply) {
    Tree->DropEdit ();
    return 0;
  }
  TreeItem *Item = Tree->EditItem;
  bool New = Tree->EditNew;
  std::string Parent = Tree->EditParentPath;
  std::string OwnPath = PathOf (*Item);
  std::string NotifiedPath = New ? Parent : OwnPath;
  TREE_NOTIFY_DATA Info {};
  Info.TypedName = reinterpret_cast<CHAR8 *> (Text.data ());
  Info.ItemPath = reinterpret_cast<CHAR8 *> (NotifiedPath.data ());
  Tree->Send (New ? TREE_NEW_ITEM_DONE : TREE_RENAME_DONE, Tree->IndexOf (Item), Info);
  uint32_t Answer = Info.Answer;
  if (AsTree (Tree->Rec) != Tree || Tree->Edit == nullptr || Tree->EditItem != Item) return Answer;
  bool Accepted = Answer != TREE_REFUSE_EDIT && !Text.empty ();
  uint16_t Index = Tree->IndexOf (Item);
  if (Accepted && Index != kNoRow) {
    // Keep the item under its new name; a renamed item's descendants follow it.
    std::string Directory = Parent;
    if (!New) {
      size_t Cut = OwnPath.rfind ('\\');
      Directory = Cut == 0 || Cut == std::string::npos ? std::string ("\\") : OwnPath.substr (0, Cut);
    }
    std::string NewPath = JoinPath (Directory, Text);
    if (NewPath.size () < sizeof (Item->Item.Path)) {
      SetName (Item->Item, Text);
      SetPath (Item->Item, NewPath);
      size_t End = EndOfSubtree (*Tree, Index);
      for (size_t I = Index + 1; I < End; I++) {
        std::string Path = PathOf (*Tree->Items[I]);
        if (Path.compare (0, OwnPath.size (), OwnPath) == 0) SetPath (Tree->Items[I]->Item, NewPath + Path.substr (OwnPath.size ()));
      }
      Tree->EditNew = false;   // stays in the tree
    }
  }
  Tree->DropEdit ();
  return Answer;
}

void StartEdit (TreeObject *Tree, TreeItem *Item, bool New, const std::string &ParentPath) {
  FILE_LIST &L = Tree->Data;
  uint16_t Index = Tree->IndexOf (Item);
  auto Field = std::make_unique<EditObject> ();
  Field->Data.Kind = CONTROL_KIND_EDIT;
  Field->Data.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
  uint16_t Indent = static_cast<uint16_t> (std::min<int> (Item->Item.Depth * 16 + 20, 0x7FFF));
  Field->Data.X = static_cast<UINT16> (L.Control.X + Indent);
  int Visible = Index >= L.TopItem ? Index - L.TopItem : 0;
  Field->Data.Y = static_cast<UINT16> (L.Control.Y + 2 + Visible * C ().RowHeight ());
  Field->Data.Width = L.Control.Width > Indent ? static_cast<UINT16> (L.Control.Width - Indent) : 0;
  Field->Data.Height = C ().RowHeight ();
  Field->SetText (reinterpret_cast<const char *> (Item->Item.Name));
  Field->Finish = [Tree] (const std::string &Text, bool Apply) { FinishTreeItemEdit (Tree, Text, Apply); };
  CONTROL *Edit = B ().AddControl (L.Control.Parent, std::move (Field), false, true);
  if (Edit == nullptr) return;
  Tree->Edit = Edit;
  Tree->EditItem = Item;
  Tree->EditNew = New;
  Tree->EditParentPath = ParentPath;
  L.Control.Parent->FocusControl = Edit;
}

// ------------------------------------------------------------ table ops

FILE_LIST *EFIAPI OpCreateFileList (WINDOW_HEADER *Parent, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height, UINTN) {
  WindowInfo *Info = B ().FindWindow (Parent);
  if (Info == nullptr || Info->Popup) return nullptr;
  auto Tree = std::make_unique<TreeObject> ();
  TreeObject *Object = Tree.get ();
  FILE_LIST &L = Tree->Data;
  L.Control.Kind = CONTROL_KIND_FILE_LIST;
  L.Control.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
  L.Control.X = X;
  L.Control.Y = Y;
  L.Control.Width = Width;
  L.Control.Height = Height;
  L.SelectedItem = kNoRow;
  if (B ().AddControl (Parent, std::move (Tree), true, true) == nullptr) return nullptr;
  return &Object->Data;
}

UINTN EFIAPI OpAddFileListItem (FILE_LIST *Target, BOOLEAN HasChildren, UINT8 Icon, UINTN, const VOID *Entry,
                                const CHAR8 *ParentPath) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr) return 0;
  if (Entry == nullptr || Tree->Items.size () >= kMaxRows) return Tree->Items.size ();
  std::string Name = EntryName (Entry);
  std::string Parent = ParentPath != nullptr ? CutText (reinterpret_cast<const char *> (ParentPath), 511) : "\\";
  if (Parent.empty ()) Parent = "\\";
  std::string ParentKey = Parent;   // "\docs\" names the same item as "\docs"
  while (ParentKey.size () > 1 && ParentKey.back () == '\\') ParentKey.pop_back ();
  bool Root = Name == "\\";
  std::string Path = Root ? std::string ("\\") : JoinPath (Parent, Name);
  if (Name.empty () || Path.size () >= sizeof (FILE_LIST_ITEM::Path)) return Tree->Items.size ();

  auto Item = std::make_unique<TreeItem> ();
  Item->Item.Icon = Icon;
  Item->Item.HasChildren = HasChildren ? 1 : 0;
  SetName (Item->Item, Name);
  SetPath (Item->Item, Path);
  size_t Position = Tree->Items.size ();
  uint16_t Depth = Root ? 0 : DepthOf (Path);
  if (!Root) {
    // Under its parent when the parent is in the tree (the last match: the newest).
    for (size_t I = Tree->Items.size (); I-- > 0;) {
      if (!EqualIgnoringAsciiCase (PathOf (*Tree->Items[I]), ParentKey)) continue;
      Tree->Items[I]->Item.Expanded = 1;
      Depth = static_cast<uint16_t> (Tree->Items[I]->Item.Depth + 1);
      Position = EndOfSubtree (*Tree, I);
      break;
    }
  }
  Item->Item.Depth = Depth;
  Tree->Insert (Position, std::move (Item));
  return Tree->Items.size ();
}

VOID EFIAPI OpClearFileList (FILE_LIST *Target) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr) return;
  Tree->DropEdit ();
  Tree->Items.clear ();
  Tree->Data.ItemCount = 0;
  Tree->Data.SelectedItem = kNoRow;
  Tree->Data.TopItem = 0;
}

VOID EFIAPI OpBeginFileListNewItem (FILE_LIST *Target, UINT8 Icon) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr || Tree->Items.empty () || Tree->Items.size () >= kMaxRows) return;
  if (Tree->Edit != nullptr) FinishTreeItemEdit (Tree, "", false);
  if (AsTree (Target) != Tree || Tree->Items.empty ()) return;
  size_t Parent = Tree->Data.SelectedItem < Tree->Items.size () ? Tree->Data.SelectedItem : 0;
  std::string ParentPath = PathOf (*Tree->Items[Parent]);
  auto Item = std::make_unique<TreeItem> ();
  TreeItem *Added = Item.get ();
  Item->Item.Icon = Icon;
  Item->Item.Depth = static_cast<uint16_t> (Tree->Items[Parent]->Item.Depth + 1);
  SetPath (Item->Item, ParentPath);
  Tree->Items[Parent]->Item.Expanded = 1;
  Tree->Items[Parent]->Item.HasChildren = 1;
  Tree->Insert (EndOfSubtree (*Tree, Parent), std::move (Item));
  StartEdit (Tree, Added, true, ParentPath);
}

VOID EFIAPI OpBeginFileListRename (FILE_LIST *Target, WINDOW_HEADER *) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr) return;
  if (Tree->Edit != nullptr) FinishTreeItemEdit (Tree, "", false);
  if (AsTree (Target) != Tree) return;
  uint16_t Index = Tree->Data.SelectedItem;
  if (Index >= Tree->Items.size () || Tree->Items[Index]->Item.Depth == 0) return;   // the root keeps its name
  StartEdit (Tree, Tree->Items[Index].get (), false, std::string ());
}

FILE_LIST_ITEM *EFIAPI OpGetFileListItem (FILE_LIST *Target, UINT16 Index) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr || Index >= Tree->Items.size ()) return nullptr;
  return &Tree->Items[Index]->Item;
}

}  // namespace

void FillTreeOperations (CONTROL_DRIVER_PROTOCOL &T) {
  T.CreateFileList = OpCreateFileList;
  T.AddFileListItem = OpAddFileListItem;
  T.ClearFileList = OpClearFileList;
  T.BeginFileListNewItem = OpBeginFileListNewItem;
  T.BeginFileListRename = OpBeginFileListRename;
  T.GetFileListItem = OpGetFileListItem;
}

// ------------------------------------------------------ user actions

std::vector<FILE_LIST_ITEM> ControlDriver::TreeItems (FILE_LIST *Target) const {
  std::vector<FILE_LIST_ITEM> Out;
  if (TreeObject *Tree = AsTree (Target))
    for (auto &Item : Tree->Items) Out.push_back (Item->Item);
  return Out;
}

namespace {

// Notification about one item, with its own path in the data record.
UINTN NotifyItem (TreeObject *Tree, UINT8 Code, uint16_t Index, uint16_t X = 0, uint16_t Y = 0) {
  std::string Path = PathOf (*Tree->Items[Index]);
  TREE_NOTIFY_DATA Info {};
  Info.X = X;
  Info.Y = Y;
  Info.ItemPath = reinterpret_cast<CHAR8 *> (Path.data ());
  return Tree->Send (Code, Index, Info);
}

}  // namespace

void ControlDriver::ExpandTreeItem (FILE_LIST *Target, uint16_t Index) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr || Index >= Tree->Items.size ()) return;
  WindowBase::State::Scope Guard (B ());
  FILE_LIST_ITEM &Item = Tree->Items[Index]->Item;
  size_t End = EndOfSubtree (*Tree, Index);
  if (Item.Expanded != 0 && End > Index + 1u) {
    // Collapsing drops the children; expanding again asks for them anew.
    if (Tree->Edit != nullptr && Tree->IndexOf (Tree->EditItem) > Index && Tree->IndexOf (Tree->EditItem) < End)
      Tree->DropEdit ();
    while (EndOfSubtree (*Tree, Index) > Index + 1u) Tree->Remove (Index + 1);
    Tree->Items[Index]->Item.Expanded = 0;
    return;
  }
  if (Item.HasChildren == 0) return;
  NotifyItem (Tree, TREE_EXPANDED, Index);
}

void ControlDriver::SelectTreeItem (FILE_LIST *Target, uint16_t Index) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr || Index >= Tree->Items.size ()) return;
  WindowBase::State::Scope Guard (B ());
  Tree->Data.SelectedItem = Index;
  NotifyItem (Tree, TREE_SELECTED, Index);
}

void ControlDriver::ActivateTreeItem (FILE_LIST *Target, uint16_t Index) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr || Index >= Tree->Items.size ()) return;
  WindowBase::State::Scope Guard (B ());
  Tree->Data.SelectedItem = Index;
  TreeItem *Item = Tree->Items[Index].get ();
  UINTN Result = NotifyItem (Tree, TREE_ACTIVATED, Index);
  // Not taken by the window: the tree's own action is to open the item's branch.
  if (Result != 0 || AsTree (Target) != Tree) return;
  uint16_t Now = Tree->IndexOf (Item);
  if (Now != kNoRow && Item->Item.Expanded == 0 && Item->Item.HasChildren != 0) ExpandTreeItem (Target, Now);
}

void ControlDriver::TreeContextClick (FILE_LIST *Target, uint16_t Index, uint16_t X, uint16_t Y) {
  TreeObject *Tree = AsTree (Target);
  if (Tree == nullptr || Index >= Tree->Items.size ()) return;
  WindowBase::State::Scope Guard (B ());
  Tree->Data.SelectedItem = Index;
  int32_t Ox = 0, Oy = 0;
  B ().Origin (Tree->Rec, Ox, Oy);
  NotifyItem (Tree, TREE_CONTEXT, Index, static_cast<uint16_t> (std::clamp (Ox + X, 0, 0xFFFF)),
              static_cast<uint16_t> (std::clamp (Oy + Y, 0, 0xFFFF)));
}

bool ControlDriver::TreeEditing (FILE_LIST *Target) const {
  TreeObject *Tree = AsTree (Target);
  return Tree != nullptr && Tree->Edit != nullptr;
}

uint32_t ControlDriver::FinishTreeEdit (FILE_LIST *Target, const std::string &Text, bool Apply) {
  TreeObject *Tree = AsTree (Target);
  return Tree != nullptr ? FinishTreeItemEdit (Tree, Text, Apply) : 0;
}

}  // namespace env
