-- For pandoc: a table becomes a list of terms, which a terminal shows better. A term is followed by
-- the second column and, named by their headings, the further ones.
function Table(table)
  local headings, items = {}, {}
  for column, cell in ipairs(table.head.rows[1].cells) do
    headings[column] = pandoc.utils.stringify(cell.contents)
  end
  for _, row in ipairs(table.bodies[1].body) do
    local text = pandoc.List()
    for column = 2, #row.cells do
      local words = pandoc.utils.blocks_to_inlines(row.cells[column].contents)
      if #words > 0 and #text > 0 then
        local heading = headings[column]:lower()
        text:insert(pandoc.Str(heading ~= "" and "; " .. heading .. ": " or ": "))
      end
      text:extend(words)
    end
    local term = pandoc.utils.blocks_to_inlines(row.cells[1].contents)
    items[#items + 1] = { term, { pandoc.Plain(text) } }
  end
  return pandoc.DefinitionList(items)
end
