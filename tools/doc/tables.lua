-- For pandoc: a table becomes a list of terms, which a terminal shows better. A term is followed by the
-- second column and, named by their headings, the further ones.
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
        text:insert(pandoc.Str(headings[column] ~= "" and "; " .. headings[column]:lower() .. ": " or ": "))
      end
      text:extend(words)
    end
    items[#items + 1] = { pandoc.utils.blocks_to_inlines(row.cells[1].contents), { pandoc.Plain(text) } }
  end
  return pandoc.DefinitionList(items)
end
