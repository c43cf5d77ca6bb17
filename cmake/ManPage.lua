-- Pandoc filter that turns docs/kova-mapping.md into the kova-mapping(1) manual page.
--
-- The page reads well as Markdown and as a manual page; only its shape changes here, never its
-- words:
-- - the Markdown title "kova-mapping(1)" goes: the page's .TH line carries the name and section;
-- - the other headings move up one level, so "## NAME" becomes .SH NAME and "### check FILE..."
--   becomes .SS, as man(7) lays out a page;
-- - the dash of the NAME line becomes a hyphen, the separator that mandb and apropos read;
-- - tables are narrowed to fit an 80-column terminal with their column gaps;
-- - on a terminal, where groff shows the page as one long page (the man macros' cR register),
--   the page is long from the start: that page otherwise grows only as far as the text has gone,
--   and tbl, which keeps each table in one piece, would take a table that crosses the first 66
--   lines for one that does not fit, warn, and push it down with blank lines. The man macros cut
--   the page to its text at the end.

-- The share of the text width that a table's columns may take together.
local TABLE_WIDTH = 0.85

local function is_heading(block, text)
  return block.t == 'Header' and pandoc.utils.stringify(block) == text
end

function Table(tbl)
  local total = 0
  for _, colspec in ipairs(tbl.colspecs) do
    local width = colspec[2]
    if type(width) == 'number' then
      total = total + width
    end
  end
  if total <= TABLE_WIDTH then
    return nil
  end
  for _, colspec in ipairs(tbl.colspecs) do
    if type(colspec[2]) == 'number' then
      colspec[2] = colspec[2] * TABLE_WIDTH / total
    end
  end
  return tbl
end

local ROOM_FOR_TABLES = '.if n .if \\n[cR] .pl 1000i'

function Pandoc(doc)
  local blocks = { pandoc.RawBlock('man', ROOM_FOR_TABLES) }
  local in_name = false
  for _, block in ipairs(doc.blocks) do
    if block.t == 'Header' and block.level == 1 then
      -- The page's title: the .TH line says it.
    else
      if block.t == 'Header' then
        block.level = block.level - 1
        in_name = is_heading(block, 'NAME')
      elseif in_name and block.t == 'Para' then
        block = pandoc.walk_block(block, {
          Str = function(str)
            if str.text == '—' or str.text == '–' then
              return pandoc.Str('-')
            end
          end,
        })
      end
      table.insert(blocks, block)
    end
  end
  return pandoc.Pandoc(blocks, doc.meta)
end
