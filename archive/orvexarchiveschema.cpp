#include "orvexarchiveschema.h"

namespace {
using Dialect = OrvexArchiveBackend::Dialect;
constexpr int kBoth = int(Dialect::Sqlite) | int(Dialect::Postgres);
constexpr int kSqlite = int(Dialect::Sqlite);
constexpr int kPostgres = int(Dialect::Postgres);

struct Statement
{
    int dialects;
    const char *sql;
};

// Step 1: the archive's tables.
const Statement kTables[] = {
    {kBoth, "CREATE TABLE settings(key TEXT PRIMARY KEY, value TEXT NOT NULL)"},
    {kBoth, "CREATE TABLE roles(id TEXT PRIMARY KEY, "
            "kind TEXT NOT NULL CHECK(kind IN ('user','group','system','directory')), "
            "display_name TEXT NOT NULL, password_hash TEXT)"},
    {kBoth, "CREATE TABLE role_members(role_id TEXT NOT NULL REFERENCES roles(id) ON DELETE CASCADE, "
            "member_id TEXT NOT NULL REFERENCES roles(id) ON DELETE CASCADE, "
            "PRIMARY KEY(role_id, member_id))"},
    {kBoth, "CREATE TABLE doc_types(key TEXT PRIMARY KEY, name TEXT NOT NULL)"},
    {kBoth, "CREATE TABLE doc_statuses(key TEXT PRIMARY KEY, name TEXT NOT NULL)"},
    {kBoth, "CREATE TABLE documents(id INTEGER PRIMARY KEY, docs_id INTEGER NOT NULL UNIQUE, "
            "type_key TEXT REFERENCES doc_types(key), status_key TEXT REFERENCES doc_statuses(key), "
            "title TEXT NOT NULL, file_name TEXT NOT NULL, doc_date TEXT NOT NULL, "
            "current_version INTEGER NOT NULL, read_role TEXT REFERENCES roles(id), "
            "owner TEXT NOT NULL DEFAULT '', created TEXT NOT NULL)"},
    {kSqlite, "CREATE TABLE versions(doc_id INTEGER NOT NULL REFERENCES documents(id) ON DELETE CASCADE, "
              "version INTEGER NOT NULL, file TEXT NOT NULL, size INTEGER NOT NULL, "
              "sha256 TEXT NOT NULL, pages INTEGER NOT NULL, created TEXT NOT NULL, "
              "PRIMARY KEY(doc_id, version))"},
    {kPostgres, "CREATE TABLE versions(doc_id INTEGER NOT NULL REFERENCES documents(id) ON DELETE CASCADE, "
                "version INTEGER NOT NULL, file TEXT NOT NULL, size BIGINT NOT NULL, "
                "sha256 TEXT NOT NULL, pages INTEGER NOT NULL, created TEXT NOT NULL, "
                "PRIMARY KEY(doc_id, version))"},
    {kBoth, "CREATE INDEX versions_sha256 ON versions(sha256)"},
    {kSqlite, "CREATE TABLE page_hashes(doc_id INTEGER NOT NULL, version INTEGER NOT NULL, "
              "page INTEGER NOT NULL, hash BLOB NOT NULL, PRIMARY KEY(doc_id, version, page), "
              "FOREIGN KEY(doc_id, version) REFERENCES versions(doc_id, version) ON DELETE CASCADE)"},
    {kPostgres, "CREATE TABLE page_hashes(doc_id INTEGER NOT NULL, version INTEGER NOT NULL, "
                "page INTEGER NOT NULL, hash BYTEA NOT NULL, PRIMARY KEY(doc_id, version, page), "
                "FOREIGN KEY(doc_id, version) REFERENCES versions(doc_id, version) ON DELETE CASCADE)"},
    {kSqlite, "CREATE VIRTUAL TABLE doc_text USING fts5(title, body)"},
    // German stems find inflected words, the simple configuration finds
    // numbers and names as they are written. Words are the runs of letters
    // and digits, as in the embedded index ("RE-2026-0101" holds "re", "2026"
    // and "0101"); a tsvector holds at most 1 MB, so very long texts are
    // indexed from their start.
    {kPostgres, "CREATE TABLE doc_text(doc_id INTEGER PRIMARY KEY REFERENCES documents(id) ON DELETE CASCADE, "
                "title TEXT NOT NULL, body TEXT NOT NULL, "
                "search tsvector GENERATED ALWAYS AS ("
                "to_tsvector('german'::regconfig, regexp_replace(left(title || ' ' || body, 200000), '[^[:alnum:]]+', ' ', 'g')) || "
                "to_tsvector('simple'::regconfig, regexp_replace(left(title || ' ' || body, 200000), '[^[:alnum:]]+', ' ', 'g'))) STORED)"},
    {kPostgres, "CREATE INDEX doc_text_search ON doc_text USING GIN (search)"},
    {kBoth, "CREATE TABLE clipboards(uuid TEXT PRIMARY KEY, name TEXT NOT NULL, "
            "owner TEXT NOT NULL, created TEXT NOT NULL)"},
    {kBoth, "CREATE TABLE clipboard_entries(clipboard TEXT NOT NULL REFERENCES clipboards(uuid) ON DELETE CASCADE, "
            "docs_id INTEGER NOT NULL, doc_id INTEGER NOT NULL REFERENCES documents(id) ON DELETE CASCADE, "
            "note TEXT NOT NULL DEFAULT '', position INTEGER NOT NULL, PRIMARY KEY(clipboard, docs_id))"},
    {kBoth, "CREATE INDEX clipboard_entries_docs ON clipboard_entries(docs_id)"},
    {kBoth, "CREATE TABLE clipboard_rights(clipboard TEXT NOT NULL REFERENCES clipboards(uuid) ON DELETE CASCADE, "
            "role_id TEXT NOT NULL REFERENCES roles(id) ON DELETE CASCADE, "
            "mode TEXT NOT NULL CHECK(mode IN ('R','W')), PRIMARY KEY(clipboard, role_id))"},
    {kSqlite, "CREATE TABLE uploads(id TEXT PRIMARY KEY, owner TEXT NOT NULL, file TEXT NOT NULL, "
              "original_name TEXT NOT NULL, size INTEGER NOT NULL, sha256 TEXT NOT NULL, created TEXT NOT NULL)"},
    {kPostgres, "CREATE TABLE uploads(id TEXT PRIMARY KEY, owner TEXT NOT NULL, file TEXT NOT NULL, "
                "original_name TEXT NOT NULL, size BIGINT NOT NULL, sha256 TEXT NOT NULL, created TEXT NOT NULL)"},
    // On the server, files and page images are rows: the documents' files
    // ("files/<doc>/v<n>.pdf", "uploads/<id>.pdf") in chunks, streamed in and
    // out one chunk at a time, so that no file has to fit into memory.
    {kPostgres, "CREATE TABLE files(id BIGSERIAL PRIMARY KEY, name TEXT NOT NULL UNIQUE, "
                "doc_id INTEGER REFERENCES documents(id) ON DELETE CASCADE, "
                "owner TEXT NOT NULL DEFAULT current_user, size BIGINT NOT NULL DEFAULT 0)"},
    {kPostgres, "CREATE INDEX files_doc ON files(doc_id)"},
    {kPostgres, "CREATE TABLE file_chunks(file_id BIGINT NOT NULL REFERENCES files(id) ON DELETE CASCADE, "
                "seq INTEGER NOT NULL, data BYTEA NOT NULL, PRIMARY KEY(file_id, seq))"},
    // Document files are compressed already: no second try.
    {kPostgres, "ALTER TABLE file_chunks ALTER COLUMN data SET STORAGE EXTERNAL"},
    {kPostgres, "CREATE TABLE page_images(doc_id INTEGER NOT NULL REFERENCES documents(id) ON DELETE CASCADE, "
                "version INTEGER NOT NULL, page INTEGER NOT NULL, size INTEGER NOT NULL, png BYTEA NOT NULL, "
                "PRIMARY KEY(doc_id, version, page, size))"},
};

// Step 2: the duplicate check's inspection of an upload, kept for its commit:
// pages stays NULL until the check has run.
const Statement kUploadInspection[] = {
    {kBoth, "ALTER TABLE uploads ADD COLUMN pages INTEGER"},
    {kBoth, "ALTER TABLE uploads ADD COLUMN body TEXT"},
    {kSqlite, "CREATE TABLE upload_pages(upload TEXT NOT NULL REFERENCES uploads(id) ON DELETE CASCADE, "
              "page INTEGER NOT NULL, hash BLOB NOT NULL, PRIMARY KEY(upload, page))"},
    {kPostgres, "CREATE TABLE upload_pages(upload TEXT NOT NULL REFERENCES uploads(id) ON DELETE CASCADE, "
                "page INTEGER NOT NULL, hash BYTEA NOT NULL, PRIMARY KEY(upload, page))"},
};

// Step 3: changes seen by others, and on the server the rights enforced by the
// server itself.
//
// In a file, triggers count the changes of clipboards and documents, and
// other processes watch the counters. On the server, a trigger notifies the
// channels orvex_clipboards and orvex_documents at each commit; the payload is
// the writer's application name, which tells a listener its own changes.
//
// Every archive user connects as a database role of the same name. Row-level
// security lets a role see the clipboards, entries, notes and rights of the
// clipboards it may view (it owns them, or one of its roles holds "R" or "W"),
// and change only those where it may edit (it owns them, or one of its roles
// holds "W"). Documents are listed to every archive user; their text, files
// and page images only to those who may read them. The helpers run as the
// schema's owner (who is not bound by the policies), so that a policy can
// read the rights without being subject to itself; they answer only for the
// role of the session (or one it may act as).
const Statement kLiveAndRights[] = {
    {kSqlite, "CREATE TABLE revisions(topic TEXT PRIMARY KEY, counter INTEGER NOT NULL)"},
    {kSqlite, "INSERT INTO revisions(topic, counter) VALUES ('clipboards', 0), ('documents', 0)"},
    {kSqlite, "CREATE TRIGGER clipboards_added AFTER INSERT ON clipboards BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER clipboards_changed AFTER UPDATE ON clipboards BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER clipboards_removed AFTER DELETE ON clipboards BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER entries_added AFTER INSERT ON clipboard_entries BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER entries_changed AFTER UPDATE ON clipboard_entries BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER entries_removed AFTER DELETE ON clipboard_entries BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER rights_added AFTER INSERT ON clipboard_rights BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER rights_changed AFTER UPDATE ON clipboard_rights BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER rights_removed AFTER DELETE ON clipboard_rights BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'clipboards'; END"},
    {kSqlite, "CREATE TRIGGER documents_added AFTER INSERT ON documents BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'documents'; END"},
    {kSqlite, "CREATE TRIGGER documents_changed AFTER UPDATE ON documents BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'documents'; END"},
    {kSqlite, "CREATE TRIGGER documents_removed AFTER DELETE ON documents BEGIN "
              "UPDATE revisions SET counter = counter + 1 WHERE topic = 'documents'; END"},

    {kPostgres, "CREATE FUNCTION orvex_notify() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN "
                "PERFORM pg_notify(TG_ARGV[0], current_setting('application_name')); RETURN NULL; END $$"},
    {kPostgres, "CREATE TRIGGER clipboards_changed AFTER INSERT OR UPDATE OR DELETE ON clipboards "
                "FOR EACH STATEMENT EXECUTE FUNCTION orvex_notify('orvex_clipboards')"},
    {kPostgres, "CREATE TRIGGER entries_changed AFTER INSERT OR UPDATE OR DELETE ON clipboard_entries "
                "FOR EACH STATEMENT EXECUTE FUNCTION orvex_notify('orvex_clipboards')"},
    {kPostgres, "CREATE TRIGGER rights_changed AFTER INSERT OR UPDATE OR DELETE ON clipboard_rights "
                "FOR EACH STATEMENT EXECUTE FUNCTION orvex_notify('orvex_clipboards')"},
    {kPostgres, "CREATE TRIGGER documents_changed AFTER INSERT OR UPDATE OR DELETE ON documents "
                "FOR EACH STATEMENT EXECUTE FUNCTION orvex_notify('orvex_documents')"},

    {kPostgres, "CREATE FUNCTION orvex_roles_of(member text) RETURNS SETOF text "
                "LANGUAGE sql STABLE SECURITY DEFINER SET search_path FROM CURRENT AS $$ "
                "WITH RECURSIVE member_of(role) AS ("
                " SELECT id FROM roles WHERE id = member AND kind = 'user'"
                "  AND (member = session_user OR pg_has_role(session_user, member, 'MEMBER'))"
                " UNION SELECT m.role_id FROM role_members m JOIN member_of ON m.member_id = member_of.role)"
                " SELECT role FROM member_of $$"},
    {kPostgres, "CREATE FUNCTION orvex_is_user(member text) RETURNS boolean "
                "LANGUAGE sql STABLE SECURITY DEFINER SET search_path FROM CURRENT AS $$ "
                "SELECT EXISTS (SELECT 1 FROM orvex_roles_of(member)) $$"},
    // The clipboards member may view (editable false) or edit (true): those it
    // owns, and those where one of its roles holds "R" or "W" (only "W" to edit).
    {kPostgres, "CREATE FUNCTION orvex_clipboards_of(member text, editable boolean) RETURNS SETOF text "
                "LANGUAGE sql STABLE SECURITY DEFINER SET search_path FROM CURRENT AS $$ "
                "WITH mine AS (SELECT orvex_roles_of(member) AS role) "
                "SELECT c.uuid FROM clipboards c WHERE c.owner = member AND EXISTS (SELECT 1 FROM mine) "
                "UNION SELECT r.clipboard FROM clipboard_rights r JOIN mine ON mine.role = r.role_id "
                "WHERE NOT editable OR r.mode = 'W' $$"},
    // New documents take numbers above every document's and every entry's,
    // including entries of clipboards the importing user may not view.
    {kPostgres, "CREATE FUNCTION orvex_next_document_numbers(OUT next_id integer, OUT next_docs_id integer) "
                "LANGUAGE sql STABLE SECURITY DEFINER SET search_path FROM CURRENT AS $$ "
                "SELECT COALESCE(MAX(d.id), 1000) + 1, GREATEST(COALESCE(MAX(d.docs_id), 5000), "
                "(SELECT COALESCE(MAX(e.docs_id), 0) FROM clipboard_entries e)) + 1 FROM documents d $$"},

    // Policies compare with sets computed once per statement (an uncorrelated
    // subquery), not with a function called for every row.
    {kPostgres, "ALTER TABLE clipboards ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY view ON clipboards FOR SELECT USING (uuid IN (SELECT orvex_clipboards_of(current_user, false)))"},
    {kPostgres, "CREATE POLICY create_own ON clipboards FOR INSERT WITH CHECK (owner = current_user AND (SELECT orvex_is_user(current_user)))"},
    {kPostgres, "CREATE POLICY edit ON clipboards FOR UPDATE USING (uuid IN (SELECT orvex_clipboards_of(current_user, true)))"},
    {kPostgres, "CREATE POLICY remove ON clipboards FOR DELETE USING (uuid IN (SELECT orvex_clipboards_of(current_user, true)))"},
    {kPostgres, "ALTER TABLE clipboard_entries ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY view ON clipboard_entries FOR SELECT USING (clipboard IN (SELECT orvex_clipboards_of(current_user, false)))"},
    {kPostgres, "CREATE POLICY add ON clipboard_entries FOR INSERT WITH CHECK (clipboard IN (SELECT orvex_clipboards_of(current_user, true)) AND EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND (d.read_role IS NULL OR d.read_role IN (SELECT orvex_roles_of(current_user)))))"},
    {kPostgres, "CREATE POLICY edit ON clipboard_entries FOR UPDATE USING (clipboard IN (SELECT orvex_clipboards_of(current_user, true))) WITH CHECK (clipboard IN (SELECT orvex_clipboards_of(current_user, true)))"},
    {kPostgres, "CREATE POLICY remove ON clipboard_entries FOR DELETE USING (clipboard IN (SELECT orvex_clipboards_of(current_user, true)))"},
    {kPostgres, "ALTER TABLE clipboard_rights ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY view ON clipboard_rights FOR SELECT USING (clipboard IN (SELECT orvex_clipboards_of(current_user, false)))"},
    {kPostgres, "CREATE POLICY grant_right ON clipboard_rights FOR INSERT WITH CHECK (clipboard IN (SELECT orvex_clipboards_of(current_user, true)))"},
    {kPostgres, "CREATE POLICY change_right ON clipboard_rights FOR UPDATE USING (clipboard IN (SELECT orvex_clipboards_of(current_user, true))) WITH CHECK (clipboard IN (SELECT orvex_clipboards_of(current_user, true)))"},
    {kPostgres, "CREATE POLICY revoke_right ON clipboard_rights FOR DELETE USING (clipboard IN (SELECT orvex_clipboards_of(current_user, true)))"},
    {kPostgres, "ALTER TABLE documents ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY list ON documents FOR SELECT USING ((SELECT orvex_is_user(current_user)))"},
    {kPostgres, "CREATE POLICY archive ON documents FOR INSERT WITH CHECK (owner = current_user AND (SELECT orvex_is_user(current_user)))"},
    {kPostgres, "CREATE POLICY new_version ON documents FOR UPDATE USING (owner = current_user)"},
    {kPostgres, "CREATE POLICY remove ON documents FOR DELETE USING (('tavloADMIN' IN (SELECT orvex_roles_of(current_user))))"},
    {kPostgres, "ALTER TABLE versions ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY list ON versions FOR SELECT USING ((SELECT orvex_is_user(current_user)))"},
    {kPostgres, "CREATE POLICY archive ON versions FOR INSERT WITH CHECK (EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND d.owner = current_user))"},
    {kPostgres, "ALTER TABLE page_hashes ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY compare ON page_hashes FOR SELECT USING ((SELECT orvex_is_user(current_user)))"},
    {kPostgres, "CREATE POLICY archive ON page_hashes FOR INSERT WITH CHECK (EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND d.owner = current_user))"},
    {kPostgres, "CREATE POLICY remove ON page_hashes FOR DELETE USING (('tavloADMIN' IN (SELECT orvex_roles_of(current_user))))"},
    {kPostgres, "ALTER TABLE doc_text ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY search ON doc_text FOR SELECT USING (EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND (d.read_role IS NULL OR d.read_role IN (SELECT orvex_roles_of(current_user)))))"},
    {kPostgres, "CREATE POLICY archive ON doc_text FOR INSERT WITH CHECK (EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND d.owner = current_user))"},
    {kPostgres, "CREATE POLICY remove ON doc_text FOR DELETE USING (('tavloADMIN' IN (SELECT orvex_roles_of(current_user))) OR EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND d.owner = current_user))"},
    {kPostgres, "ALTER TABLE files ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY read ON files FOR SELECT USING (owner = current_user OR (doc_id IS NOT NULL AND EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND (d.read_role IS NULL OR d.read_role IN (SELECT orvex_roles_of(current_user))))))"},
    {kPostgres, "CREATE POLICY store ON files FOR INSERT WITH CHECK (owner = current_user AND (SELECT orvex_is_user(current_user)))"},
    {kPostgres, "CREATE POLICY move ON files FOR UPDATE USING (owner = current_user) WITH CHECK (owner = current_user)"},
    {kPostgres, "CREATE POLICY remove ON files FOR DELETE USING (owner = current_user OR ('tavloADMIN' IN (SELECT orvex_roles_of(current_user))))"},
    {kPostgres, "ALTER TABLE file_chunks ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY read ON file_chunks FOR SELECT USING (EXISTS (SELECT 1 FROM files f WHERE f.id = file_id))"},
    {kPostgres, "CREATE POLICY store ON file_chunks FOR INSERT WITH CHECK (EXISTS (SELECT 1 FROM files f WHERE f.id = file_id AND f.owner = current_user))"},
    {kPostgres, "ALTER TABLE page_images ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY read ON page_images FOR SELECT USING (EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND (d.read_role IS NULL OR d.read_role IN (SELECT orvex_roles_of(current_user)))))"},
    {kPostgres, "CREATE POLICY cache ON page_images FOR INSERT WITH CHECK (EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND (d.read_role IS NULL OR d.read_role IN (SELECT orvex_roles_of(current_user)))))"},
    {kPostgres, "ALTER TABLE uploads ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY own ON uploads USING (owner = current_user) WITH CHECK (owner = current_user)"},
    {kPostgres, "ALTER TABLE upload_pages ENABLE ROW LEVEL SECURITY"},
    {kPostgres, "CREATE POLICY own ON upload_pages USING (EXISTS (SELECT 1 FROM uploads u WHERE u.id = upload))"},

    {kPostgres, "GRANT SELECT ON settings, roles, role_members, doc_types, doc_statuses, schema_version TO PUBLIC"},
    {kPostgres, "GRANT SELECT, INSERT, DELETE ON clipboards, clipboard_entries, clipboard_rights TO PUBLIC"},
    {kPostgres, "GRANT UPDATE (name) ON clipboards TO PUBLIC"},
    {kPostgres, "GRANT UPDATE (note, position) ON clipboard_entries TO PUBLIC"},
    {kPostgres, "GRANT UPDATE (mode) ON clipboard_rights TO PUBLIC"},
    {kPostgres, "GRANT SELECT, INSERT, DELETE ON documents, versions, page_hashes, doc_text, files, file_chunks, "
                "page_images, uploads, upload_pages TO PUBLIC"},
    {kPostgres, "GRANT UPDATE (current_version) ON documents TO PUBLIC"},
    {kPostgres, "GRANT UPDATE (name, doc_id, size) ON files TO PUBLIC"},
    {kPostgres, "GRANT UPDATE (pages, body) ON uploads TO PUBLIC"},
    {kPostgres, "GRANT USAGE ON SEQUENCE files_id_seq TO PUBLIC"},
};

// Step 4: a bounded page image cache on the server. Each image records its
// last use; the cache drops the least recently used ones beyond a budget.
// Readers mark their use; the trimming runs as the schema's owner, since an
// image cached for one user may be dropped by another's budget.
const Statement kImageCacheUse[] = {
    {kPostgres, "ALTER TABLE page_images ADD COLUMN used TIMESTAMPTZ NOT NULL DEFAULT now()"},
    {kPostgres, "CREATE POLICY touch ON page_images FOR UPDATE USING (EXISTS (SELECT 1 FROM documents d WHERE d.id = doc_id AND (d.read_role IS NULL OR d.read_role IN (SELECT orvex_roles_of(current_user)))))"},
    {kPostgres, "GRANT UPDATE (used) ON page_images TO PUBLIC"},
    {kPostgres, "CREATE FUNCTION orvex_trim_page_images(budget bigint) RETURNS void "
                "LANGUAGE sql VOLATILE SECURITY DEFINER SET search_path FROM CURRENT AS $$ "
                "DELETE FROM page_images p USING (SELECT doc_id, version, page, size, "
                " SUM(octet_length(png)) OVER (ORDER BY used DESC, doc_id, version, page, size) AS kept "
                " FROM page_images) o "
                "WHERE o.kept > budget AND p.doc_id = o.doc_id AND p.version = o.version "
                "AND p.page = o.page AND p.size = o.size $$"},
};

template <size_t N>
QStringList select(const Statement (&statements)[N], Dialect dialect)
{
    QStringList sql;
    for (const Statement &statement : statements)
        if (statement.dialects & int(dialect))
            sql << QString::fromUtf8(statement.sql);
    return sql;
}
} // namespace

int OrvexArchiveSchema::version()
{
    return 4;
}

QStringList OrvexArchiveSchema::step(int index, OrvexArchiveBackend::Dialect dialect)
{
    switch (index) {
    case 0:
        return select(kTables, dialect);
    case 1:
        return select(kUploadInspection, dialect);
    case 2:
        return select(kLiveAndRights, dialect);
    case 3:
        return select(kImageCacheUse, dialect);
    default:
        return {};
    }
}
