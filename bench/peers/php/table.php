<?php $count = 100; ?>
<!DOCTYPE html>
<html><head><title>Entries</title></head><body><h1>Entries</h1><table>
<?php for ($i = 1; $i <= $count; $i++) {
  $name = "Entry <$i> of the list";
  $words = "What was said & done about entry $i, in about as many words as a line of a list or a table has";
?>
<tr><td><?= $i ?></td><td><?= htmlspecialchars($name) ?></td>
<td><?= htmlspecialchars($words) ?></td><td><?= $i * 37 ?></td></tr>
<?php } ?>
</table></body></html>
