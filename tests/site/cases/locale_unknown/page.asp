<!-- #include file="part.inc" -->
