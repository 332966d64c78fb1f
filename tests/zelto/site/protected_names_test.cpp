#include "site/protected_names.h"

#include <gtest/gtest.h>

namespace zelto {
namespace {

struct Row {
  const char* path;
  const char* found;  // the name in it that is protected
};

TEST(ProtectedNames, AreFoundInAnyLetterCase) {
  const Row rows[] = {
      {"/global.asa", "global.asa"},
      {"/Global.ASA", "Global.ASA"},
      {"/zelto.toml", "zelto.toml"},
      {"/ZELTO.toml", "ZELTO.toml"},
      {"/web.config", "web.config"},
      {"/Web.Config", "Web.Config"},
      {"/sub/WEB.CONFIG", "WEB.CONFIG"},
      {"/packages.config", "packages.config"},
      {"/a.CONFIG", "a.CONFIG"},
      {"/old.asa", "old.asa"},
      {"/global.asax", "global.asax"},
      {"/Global.Asax", "Global.Asax"},
      {"/page.cs", "page.cs"},
      {"/page.aspx.CS", "page.aspx.CS"},
      {"/page.vb", "page.vb"},
      {"/page.VB", "page.VB"},
      {"/index.php", "index.php"},
      {"/index.PHP", "index.PHP"},
      {"/part.inc", "part.inc"},
      {"/part.INC", "part.INC"},
      {"/row.tpl", "row.tpl"},
      {"/row.TPL", "row.TPL"},
      {"/shop.mdb", "shop.mdb"},
      {"/shop.MDB", "shop.MDB"},
      {"/shop.accdb", "shop.accdb"},
      {"/shop.AccDB", "shop.AccDB"},
      {"/link.udl", "link.udl"},
      {"/link.UDL", "link.UDL"},
      {"/dump.sql", "dump.sql"},
      {"/dump.SQL", "dump.SQL"},
      {"/notes.db", "notes.db"},
      {"/notes.DB-wal", "notes.DB-wal"},
      {"/notes.db-journal", "notes.db-journal"},
      {"/a.sqlite", "a.sqlite"},
      {"/a.SQLite", "a.SQLite"},
      {"/a.sqlite3", "a.sqlite3"},
      {"/a.Sqlite3-shm", "a.Sqlite3-shm"},
      {"/error.log", "error.log"},
      {"/ERROR.LOG", "ERROR.LOG"},
      {"/php.ini", "php.ini"},
      {"/PHP.INI", "PHP.INI"},
      {"/prod.env", "prod.env"},
      {"/PROD.ENV", "PROD.ENV"},
      {"/.env", ".env"},
      {"/.ENV", ".ENV"},
      {"/server.key", "server.key"},
      {"/server.KEY", "server.KEY"},
      {"/server.pem", "server.pem"},
      {"/server.Pem", "server.Pem"},
      {"/page.asp.bak", "page.asp.bak"},
      {"/page.asp.BAK", "page.asp.BAK"},
      {"/page.asp.old", "page.asp.old"},
      {"/page.asp.OLD", "page.asp.OLD"},
      {"/page.asp.orig", "page.asp.orig"},
      {"/page.asp.Orig", "page.asp.Orig"},
      {"/page.asp.swp", "page.asp.swp"},
      {"/page.asp.SWP", "page.asp.SWP"},
      {"/page.asp~", "page.asp~"},
      {"/#page.asp#", "#page.asp#"},
      {"/sub/#a#", "#a#"},
      {"/page.asp.save", "page.asp.save"},
      {"/page.SAVE", "page.SAVE"},
      {"/page.asp.txt", "page.asp.txt"},
      {"/page.ASP.TXT", "page.ASP.TXT"},
      {"/page.asp.tmp", "page.asp.tmp"},
      {"/page.asp.rej", "page.asp.rej"},
      {"/page.asp.1", "page.asp.1"},
      {"/page.1", "page.1"},
      {"/page.asp.12", "page.asp.12"},
      {"/error.log.2", "error.log.2"},
      {"/page.asp.swo", "page.asp.swo"},
      {"/zelto.toml.dpkg-dist", "zelto.toml.dpkg-dist"},
      {"/page.asp.dpkg-old", "page.asp.dpkg-old"},
      {"/page.asp.DPKG-NEW", "page.asp.DPKG-NEW"},
      {"/old.aspx", "old.aspx"},
      {"/page.asp - Copy", "page.asp - Copy"},
      {"/page.asp (1)", "page.asp (1)"},
      {"/page.asp_old", "page.asp_old"},
      {"/page.asp2", "page.asp2"},
      {"/page.asp.html", "page.asp.html"},
      {"/Page.ASP.Html", "Page.ASP.Html"},
      {"/part.inc.txt", "part.inc.txt"},
      {"/old.asa.zip", "old.asa.zip"},
      {"/zelto.toml.txt", "zelto.toml.txt"},
      {"/web.config-saved", "web.config-saved"},
      {"/page.new", "page.new"},
      {"/notes.bak1", "notes.bak1"},
      {"/shop.db.12", "shop.db.12"},
      {"/site.cfg.rpmnew", "site.cfg.rpmnew"},
      {"/site.cfg.rpmsave", "site.cfg.rpmsave"},
      {"/page.backup", "page.backup"},
      {"/server.pfx", "server.pfx"},
      {"/server.p12", "server.p12"},
      {"/shop.sqlitedb", "shop.sqlitedb"},
      {"/shop.ldb", "shop.ldb"},
      {"/bin", "bin"},
      {"/bin/", "bin"},
      {"/BIN/site.dll", "BIN"},
      {"/sub/Bin/a/b.txt", "Bin"},
      {"/App_Code/a.txt", "App_Code"},
      {"/app_code/a.txt", "app_code"},
      {"/App_Data/a.txt", "App_Data"},
      {"/APP_DATA/a.txt", "APP_DATA"},
      {"/node_modules/a/index.js", "node_modules"},
      {"/Node_Modules/", "Node_Modules"},
      {"/includes/a.txt", "includes"},
      {"/Includes/a.txt", "Includes"},
      {"/templates/a.html", "templates"},
      {"/TEMPLATES/a.html", "TEMPLATES"},
      {"/_part.asp", "_part.asp"},
      {"/_parts/a.txt", "_parts"},
      {"/.hidden", ".hidden"},
      {"/.git/config", ".git"},
      {"/a/.svn/entries", ".svn"},
      {"/.", "."},
  };
  const ProtectedNames names;
  for (const Row& row : rows) EXPECT_EQ(row.found, names.find_in(row.path)) << row.path;
}

TEST(ProtectedNames, AreNotThoseThatOnlyResembleThem) {
  const ProtectedNames names;
  for (const char* path : {"/",
                           "/a/",
                           "/a_b.txt",
                           "/a~b.txt",
                           "/a.dbx",
                           "/a.aspect",
                           "/a.aspect.png",
                           "/a.incident.txt",
                           "/app.config.js",
                           "/sql.js",
                           "/song.mp3",
                           "/zelto.tomls",
                           "/2024",
                           "/a.css",
                           "/css",
                           "/config",
                           "/webconfig",
                           "/config/a.txt",
                           "/site.config/a.txt",
                           "/global.asa/a.txt",
                           "/binary/a.txt",
                           "/robin/",
                           "/bin.txt",
                           "/log",
                           "/logs/a.txt",
                           "/key",
                           "/a.key.txt",
                           "/asa.txt",
                           "/a.json",
                           "/a-b.txt",
                           "/sql.asp",
                           "/node_modules.txt",
                           "/app-data/a",
                           "/a.",
                           "/#",
                           "/#a",
                           "/a#",
                           "/asp.txt",
                           "/a.aspic.txt",
                           "/a.asp.txt/b.txt",
                           "/library-1.2",
                           "/library.js.2",
                           "/a.saved",
                           "/a.dpk",
                           "/env/"})
    EXPECT_EQ("", names.find_in(path)) << path;
}

// What certificate authorities and other strangers look for lies there, under names that are made at random.
TEST(ProtectedNames, LetWellKnownBe) {
  const Row rows[] = {
      {"/.well-known/acme-challenge/token", ""},
      {"/.well-known/acme-challenge/_token-1", ""},
      {"/.well-known/security.txt", ""},
      {"/.well-known/", ""},
      {"/.well-known/.hidden", ".hidden"},
      {"/.well-known/server.key", "server.key"},
      {"/.well-known/bin/a", "bin"},
      {"/.well-known/a~", "a~"},
      {"/.well-known", ".well-known"},
      {"/.Well-Known/a", ".Well-Known"},
      {"/.well-known-not/a", ".well-known-not"},
      {"/sub/.well-known/a", ".well-known"},
  };
  const ProtectedNames names;
  for (const Row& row : rows) EXPECT_EQ(row.found, names.find_in(row.path)) << row.path;
}

TEST(ProtectedNames, CanBeAddedTo) {
  ProtectedNames names;
  for (const char* name : {"drafts/", "*.cfg", "notes.txt"}) EXPECT_TRUE(names.add(name)) << name;
  for (const char* name : {"", "/", "*", "*.", "a/b", "a*", "*.a/"}) EXPECT_FALSE(names.add(name)) << name;
  const Row rows[] = {
      {"/Drafts/a.txt", "Drafts"},   {"/a.CFG", "a.CFG"}, {"/b/Notes.txt", "Notes.txt"},
      {"/notes.txt/a", ""},          {"/cfg", ""},        {"/drafts.txt", ""},
      {"/web.config", "web.config"}, {"/bin/a", "bin"},
  };
  for (const Row& row : rows) EXPECT_EQ(row.found, names.find_in(row.path)) << row.path;
}

TEST(ProtectedNames, AreListedInLinesOfAWidth) {
  const std::string text = ProtectedNames().list(40) + "\n";
  EXPECT_TRUE(text.starts_with("global.asa, web.config, zelto.toml,\nApp_Code/, App_Data/, bin/, includes/,\n"))
      << text;
  EXPECT_TRUE(text.ends_with("*.vb\n")) << text;
}

}  // namespace
}  // namespace zelto
